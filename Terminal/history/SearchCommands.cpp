#include "Terminal/history/SearchCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <unordered_set>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t foundRowColumns = 80;

/// Reports every tenth of the progress of the index, if there are many recordings.
class IndexProgress {
  public:
    void operator()(const SearchIndexKeeper::State& state) {
        constexpr std::size_t worthMentioning = 500;
        constexpr std::size_t tenths = 10;
        const std::size_t tenth = state.all < worthMentioning ? 0 : state.done * tenths / state.all;
        if (tenth == lastTenth_)
            return;
        lastTenth_ = tenth;
        printNotice(localized("Preparing the search: %lld of %lld recordings",
                              {std::to_string(state.done), std::to_string(state.all)}));
    }

  private:
    std::size_t lastTenth_ = 0;
};

void printFound(const HistoryItem& item, const std::optional<SearchExcerpt>& excerpt, bool asJSON) {
    const SearchExcerpt shown = excerpt.value_or(SearchExcerpt());
    if (asJSON) {
        printJSON({{"type", "found"},
                   {"id", item.id.text()},
                   {"startedAt", item.startedAt},
                   {"duration", item.durationSeconds},
                   {"note", item.note},
                   {"before", shown.before},
                   {"match", shown.match},
                   {"after", shown.after}});
        return;
    }
    printText(Text::trimmed(recordingRow(item, "")));
    const std::string line = Text::printableLine(shown.before + shown.match + shown.after);
    if (excerpt)
        printText(Text::fitted("    " + line, foundRowColumns));
}

} // namespace

Task<int> searchRecordings(Program& program, const TerminalOptions& options, std::string text) {
    const SearchQuery query = SearchQuery::parse(text);
    TranscriptSearch::Progress progress;
    if (!options.json && !options.quiet)
        progress = IndexProgress();
    co_await program.search.bringUpToDate(std::move(progress));
    const TranscriptSearch::Found found = co_await program.search.find(query);

    std::string problem = program.catalog.readingProblem();
    if (problem.empty() && found.unreadable > 0)
        problem = localized("Recordings whose texts cannot be read: %lld.",
                            {std::to_string(found.unreadable)});
    const std::unordered_set<UUID> matching(found.recordings.begin(), found.recordings.end());
    std::vector<RecordingMetadata> chosen;
    std::vector<UUID> ids;
    for (const auto& recording : program.catalog.recordings()) {
        const bool isNoted = recording.note && !query.isEmpty() && query.matches({*recording.note});
        if (!isNoted && !matching.contains(recording.id))
            continue;
        chosen.push_back(recording);
        ids.push_back(recording.id);
    }
    const std::vector<std::optional<SearchExcerpt>> excerpts =
        co_await program.search.excerpts(query, std::move(ids));
    for (std::size_t i = 0; i < chosen.size(); ++i)
        printFound(HistoryItemLoader::row(chosen[i], program.catalog, program.files), excerpts[i],
                   options.json);
    if (!problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::ioError);
    }
    if (chosen.empty() && !options.json && !options.quiet)
        printNotice(localized("Nothing was found."));
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
