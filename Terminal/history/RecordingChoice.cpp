#include "Terminal/history/RecordingChoice.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/RunPreparation.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace tessarune {

namespace {

constexpr std::size_t rowColumns = 80;
constexpr std::size_t durationColumns = 8;
/// The maximum number of ambiguous sessions that are listed.
constexpr std::size_t maximumNamed = 10;

/// Prints that no session, or more than one, has this ID.
void reportNotOneFound(const std::vector<HistoryItem>& found, const std::string& id) {
    if (found.empty()) {
        printProblem(localized("There is no session '%@'; --list lists them.", {id}));
        return;
    }
    printProblem(localized("The IDs of several sessions begin with '%@':", {id}));
    for (std::size_t i = 0; i < std::min(found.size(), maximumNamed); ++i)
        printNotice(recordingRow(found[i], {}, true));
    if (found.size() > maximumNamed)
        printNotice("…");
}

} // namespace

std::variant<HistoryItem, int> chosenRecording(Program& program, const std::string& id) {
    const std::string wanted = Text::lowercased(id);
    std::vector<HistoryItem> found;
    for (const auto& recording : program.catalog.recordings()) {
        if (Text::lowercased(recording.id.text()).starts_with(wanted))
            found.push_back(HistoryItemLoader::row(recording, program.catalog, program.files));
    }
    if (found.size() == 1)
        return found.front();
    if (const std::string problem = program.catalog.readingProblem();
        found.empty() && !problem.empty()) {
        printProblem(problem);
        return static_cast<int>(ExitStatus::ioError);
    }
    reportNotOneFound(found, id);
    return static_cast<int>(ExitStatus::noSuchRecording);
}

std::optional<int> recorderOf(const Program& program, const HistoryItem& item) {
    const auto holder = item.live ? DataFolderLock::holder(program.paths) : std::nullopt;
    return holder ? std::optional(holder->processID) : std::nullopt;
}

std::string recordingRow(const HistoryItem& item, const std::string& text, bool fullID) {
    const std::string id = fullID ? item.id.text() : shortID(item.id);
    const std::string row = id + "  " + item.date + " " + item.time + "  " +
                            Text::padded(item.dur, durationColumns) + "  ";
    const std::string_view content = Text::trimmed(item.note.empty() ? text : item.note);
    const std::size_t room = rowColumns - std::min(rowColumns, Text::columns(row));
    return row + Text::fitted(Text::printableLine(Text::prefix(content, rowColumns)), room);
}

std::optional<ExitStatus> lockDataFolder(Program& program) {
    try {
        const auto holder = program.recording.takeDataFolder();
        if (!holder)
            return std::nullopt;
        printProblem(
            localized("%@ is using the recordings. Try again in a few seconds. If that program is "
                      "recording, end its session first, or make the change in that program.",
                      {holder->text()}));
        return ExitStatus::dataInUse;
    } catch (const std::system_error& error) {
        printProblem(error.what());
        return ExitStatus::cannotWrite;
    }
}

std::optional<ExitStatus> prepareDataFolder(Program& program, const std::optional<UUID>& toRefine) {
    if (const auto problem = lockDataFolder(program))
        return problem;
    Application::Preparation found;
    found.repairs = program.prepare();
    for (auto* imports : {&found.repairs.untranscribedImports, &found.repairs.brokenOffImports})
        std::erase_if(*imports,
                      [&](const RecordingMetadata& import) { return toRefine == import.id; });
    for (const std::string& text : RunPreparation::repairTexts(found))
        printNotice(text);
    return std::nullopt;
}

} // namespace tessarune
