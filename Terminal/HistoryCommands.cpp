#include "Terminal/HistoryCommands.h"

#include "Terminal/ExitStatus.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "TessaruneCore/text/Text.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace tessarune {

namespace {

using Json = nlohmann::ordered_json;

/// As much of an identifier as a person types.
constexpr std::size_t shortIDLength = 8;
/// As much of a session's beginning as fits beside its date.
constexpr std::size_t beginningLength = 40;

std::string read(Program& program, const std::filesystem::path& path) {
    try {
        return program.files.exists(path) ? program.files.read(path) : std::string();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessarune-terminal: %s\n", error.what());
        return {};
    }
}

void print(const Json& object) {
    std::puts(object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

Json json(const HistoryItem& item) {
    return {{"type", "recording"},         {"id", item.id.text()},
            {"startedAt", item.startedAt}, {"duration", item.durationSeconds},
            {"bytes", item.byteCount},     {"file", item.filePath.value_or("")},
            {"note", item.note},           {"bilingual", item.hasBilingualTranscript}};
}

/// The recordings whose identifier begins so, in either case.
std::vector<HistoryItem> matching(Program& program, const std::string& id) {
    const std::string wanted = Text::lowercased(id);
    std::vector<HistoryItem> found;
    for (const auto& item : HistoryItemLoader::load(program.catalog, program.files)) {
        if (Text::lowercased(item.id.text()).starts_with(wanted))
            found.push_back(item);
    }
    return found;
}

void printTranscript(Program& program, const HistoryItem& item) {
    const std::string bilingual = read(program, program.catalog.bilingualTranscriptURL(item.id));
    const std::string text =
        bilingual.empty() ? read(program, program.catalog.transcriptURL(item.id)) : bilingual;
    std::printf("%s %s  %s  %s\n", item.date.c_str(), item.time.c_str(), item.dur.c_str(),
                item.filePath.value_or("").c_str());
    if (!item.note.empty())
        std::printf("%s\n", item.note.c_str());
    std::printf("\n%s\n",
                text.empty() ? "(no transcript)" : std::string(Text::trimmed(text)).c_str());
}

} // namespace

Task<int> listRecordings(Program& program, const TerminalOptions& options) {
    const auto items = HistoryItemLoader::load(program.catalog, program.files);
    for (const auto& item : items) {
        if (options.json) {
            print(json(item));
            continue;
        }
        std::string text = read(program, program.catalog.transcriptURL(item.id));
        text =
            Text::collapsingWhiteSpace(Text::truncated(Text::trimmed(text), beginningLength, "…"));
        std::printf("%s  %s %s  %8s  %s\n", item.id.text().substr(0, shortIDLength).c_str(),
                    item.date.c_str(), item.time.c_str(), item.dur.c_str(),
                    (item.note.empty() ? text : item.note).c_str());
    }
    if (items.empty() && !options.json && !options.quiet)
        std::fputs("No sessions have been recorded yet.\n", stderr);
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> showRecording(Program& program, const TerminalOptions& options, std::string id) {
    const auto found = matching(program, id);
    if (found.size() != 1) {
        std::fprintf(stderr, "tessarune-terminal: %s '%s'; --list shows them\n",
                     found.empty() ? "there is no session" : "several sessions begin with",
                     id.c_str());
        co_return static_cast<int>(ExitStatus::noSuchRecording);
    }
    const HistoryItem& item = found.front();
    if (options.json) {
        Json object = json(item);
        object["text"] = read(program, program.catalog.transcriptURL(item.id));
        object["bilingualText"] = read(program, program.catalog.bilingualTranscriptURL(item.id));
        const std::string words = read(program, program.catalog.wordTimelineURL(item.id));
        const Json timeline = Json::parse(words, nullptr, false);
        if (!timeline.is_discarded())
            object["timeline"] = timeline;
        print(object);
    } else {
        printTranscript(program, item);
    }
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
