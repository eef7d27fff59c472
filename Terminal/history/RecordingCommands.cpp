#include "Terminal/history/RecordingCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace tessarune {

namespace {

std::string runningText(int recorder) {
    return recorder == 0 ? localized("(running)")
                         : localized("(running, process %lld)", {std::to_string(recorder)});
}

/// Reads the sidecars of recordings and remembers whether one was unreadable.
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
    /// The text of a session's row in the list.
    std::string rowText(const HistoryItem& item) {
        const auto recorder = recorderOf(program_, item);
        return recorder ? runningText(*recorder) : source(item);
    }
    /// The text that is printed instead of a missing transcript.
    std::string missingText(const HistoryItem& item) const {
        const auto recorder = recorderOf(program_, item);
        if (recorder)
            return runningText(*recorder);
        return program_.files.exists(program_.catalog.transcriptURL(item.id))
                   ? localized("(no transcript)")
                   : localized("(no transcript; to make one: --refine %@)", {shortID(item.id)});
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
            printText(recordingRow(item, transcripts.rowText(item)));
    }
    if (!problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::ioError);
    }
    const std::size_t unlisted = program.catalog.recordings().size() - items.size();
    if (!options.json && !options.quiet && unlisted > 0)
        printNotice(
            localized("Sessions not listed because they are too short or have no sound: %lld",
                      {std::to_string(unlisted)}));
    else if (items.empty() && !options.json && !options.quiet)
        printNotice(localized("No sessions have been recorded yet."));
    co_return static_cast<int>(transcripts.status());
}

Task<int> showRecording(Program& program, const TerminalOptions& options, std::string id) {
    const auto chosen = chosenRecording(program, id);
    if (const int* status = std::get_if<int>(&chosen))
        co_return *status;
    const HistoryItem& item = std::get<HistoryItem>(chosen);
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
