#include "Terminal/HistoryCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>

namespace tessarune {

namespace {

/// As much of an identifier as a person types.
constexpr std::size_t shortIDLength = 8;
constexpr std::size_t rowColumns = 80;
/// Of several sessions that could be meant, as many are named.
constexpr std::size_t mostNamed = 10;

/// The process that records the session now; nothing for one that is over, or was cut off.
std::optional<int> recorderOf(const Program& program, const HistoryItem& item) {
    const auto holder = item.live ? DataFolderLock::holder(program.paths) : std::nullopt;
    return holder ? std::optional(holder->processID) : std::nullopt;
}

std::string runningText(int recorder) {
    return localized("(running, process %lld)", {std::to_string(recorder)});
}

/// The sidecars of recordings, and whether one could not be read.
class Transcripts {
  public:
    explicit Transcripts(Program& program) : program_(program) {}

    std::string read(const std::filesystem::path& path) {
        try {
            return program_.files.exists(path) ? program_.files.read(path) : std::string();
        } catch (const std::exception& error) {
            printProblem(error.what());
            failed_ = true;
            return {};
        }
    }
    std::string source(const HistoryItem& item) {
        return read(program_.catalog.transcriptURL(item.id));
    }
    std::string bilingual(const HistoryItem& item) {
        return read(program_.catalog.bilingualTranscriptURL(item.id));
    }
    /// What a row tells of the session.
    std::string rowText(const HistoryItem& item) {
        const auto recorder = recorderOf(program_, item);
        return recorder ? runningText(*recorder) : source(item);
    }
    /// What stands where there is no transcript.
    std::string missingText(const HistoryItem& item) const {
        const auto recorder = recorderOf(program_, item);
        return recorder ? runningText(*recorder) : localized("(no transcript)");
    }
    ExitStatus status() const { return failed_ ? ExitStatus::ioError : ExitStatus::ok; }

  private:
    Program& program_;
    bool failed_ = false;
};

nlohmann::ordered_json json(const HistoryItem& item) {
    return {{"type", "recording"},         {"id", item.id.text()},
            {"startedAt", item.startedAt}, {"duration", item.durationSeconds},
            {"bytes", item.byteCount},     {"file", item.filePath.value_or("")},
            {"note", item.note},           {"bilingual", item.hasBilingualTranscript}};
}

void printRecording(const Program& program, const HistoryItem& item,
                    nlohmann::ordered_json object) {
    object["running"] = recorderOf(program, item).has_value();
    printJSON(object);
}

/// One line that fits a screen; the note tells more than how the session began.
std::string recordingRow(const HistoryItem& item, std::size_t idLength, const std::string& text) {
    const std::string row = item.id.text().substr(0, idLength) + "  " + item.date + " " +
                            item.time + "  " + Text::padded(item.dur, shortIDLength) + "  ";
    const std::string_view content = Text::trimmed(item.note.empty() ? text : item.note);
    const std::size_t room = rowColumns - std::min(rowColumns, Text::columns(row));
    return row + Text::fitted(Text::printableLine(Text::prefix(content, rowColumns)), room);
}

/// The recordings whose identifier begins so, in either case; also those that are not listed.
std::vector<HistoryItem> matching(Program& program, const std::string& id) {
    const std::string wanted = Text::lowercased(id);
    std::vector<HistoryItem> found;
    for (const auto& recording : program.catalog.recordings()) {
        if (Text::lowercased(recording.id.text()).starts_with(wanted))
            found.push_back(HistoryItemLoader::row(recording, program.catalog, program.files));
    }
    return found;
}

/// None of them, or more than one.
void tellWhichWereFound(Program& program, const std::vector<HistoryItem>& found,
                        const std::string& id) {
    if (found.empty()) {
        printProblem(
            localized("There is no session '%@'; --list shows those that there are.", {id}));
        return;
    }
    printProblem(localized("The IDs of several sessions begin with '%@':", {id}));
    Transcripts transcripts(program);
    for (std::size_t i = 0; i < std::min(found.size(), mostNamed); ++i)
        printNotice(recordingRow(found[i], std::string::npos, transcripts.rowText(found[i])));
    if (found.size() > mostNamed)
        printNotice("…");
}

void printTranscript(Transcripts& transcripts, const HistoryItem& item) {
    const std::string bilingual = transcripts.bilingual(item);
    const std::string text = bilingual.empty() ? transcripts.source(item) : bilingual;
    printText(item.date + " " + item.time + "  " + item.dur + "  " +
              Text::printableLine(item.filePath.value_or("")));
    if (!item.note.empty())
        printText(item.note);
    printText("");
    printText(text.empty() ? transcripts.missingText(item) : std::string(Text::trimmed(text)));
}

} // namespace

Task<int> listRecordings(Program& program, const TerminalOptions& options) {
    const std::string problem = program.catalog.readingProblem();
    const auto items = HistoryItemLoader::load(program.catalog, program.files);
    Transcripts transcripts(program);
    for (const auto& item : items) {
        if (options.json)
            printRecording(program, item, json(item));
        else
            printText(recordingRow(item, shortIDLength, transcripts.rowText(item)));
    }
    if (!problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::ioError);
    }
    const std::size_t unlisted = program.catalog.recordings().size() - items.size();
    if (!options.json && !options.quiet && unlisted > 0)
        printNotice(localized("Not listed, because they are too short or have no sound: %lld",
                              {std::to_string(unlisted)}));
    else if (items.empty() && !options.json && !options.quiet)
        printNotice(localized("No sessions have been recorded yet."));
    co_return static_cast<int>(transcripts.status());
}

Task<int> showRecording(Program& program, const TerminalOptions& options, std::string id) {
    const auto found = matching(program, id);
    if (const std::string problem = program.catalog.readingProblem();
        found.empty() && !problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::ioError);
    }
    if (found.size() != 1) {
        tellWhichWereFound(program, found, id);
        co_return static_cast<int>(ExitStatus::noSuchRecording);
    }
    const HistoryItem& item = found.front();
    Transcripts transcripts(program);
    if (options.json) {
        nlohmann::ordered_json object = json(item);
        object["text"] = transcripts.source(item);
        object["bilingualText"] = transcripts.bilingual(item);
        const auto timeline = nlohmann::ordered_json::parse(
            transcripts.read(program.catalog.wordTimelineURL(item.id)), nullptr, false);
        if (!timeline.is_discarded())
            object["timeline"] = timeline;
        printRecording(program, item, std::move(object));
    } else {
        printTranscript(transcripts, item);
    }
    co_return static_cast<int>(transcripts.status());
}

} // namespace tessarune
