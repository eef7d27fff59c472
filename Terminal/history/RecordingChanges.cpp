#include "Terminal/history/RecordingChanges.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Question.h"
#include "Terminal/history/RecordingChoice.h"
#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <vector>

namespace tessarune {

namespace {

void reportChange(const TerminalOptions& options, const char* type, const HistoryItem& item,
                  const std::string& text) {
    if (options.json)
        printJSON({{"type", type}, {"id", item.id.text()}, {"note", item.note}});
    else if (!options.quiet)
        printText(text);
}

/// The recordings, each once and in the order of `ids`, or the exit status if one is not found.
std::variant<std::vector<HistoryItem>, int> chosenRecordings(Program& program,
                                                             const std::vector<std::string>& ids) {
    std::vector<HistoryItem> items;
    for (const auto& id : ids) {
        auto chosen = chosenRecording(program, id);
        if (const int* problem = std::get_if<int>(&chosen))
            return *problem;
        auto& item = std::get<HistoryItem>(chosen);
        if (std::ranges::find(items, item.id, &HistoryItem::id) == items.end())
            items.push_back(std::move(item));
    }
    return items;
}

/// Asks the user to confirm the deletion. Returns the exit status unless the user agrees.
Task<std::optional<int>> confirmDeletion(Program& program, const TerminalOptions& options,
                                         const std::vector<HistoryItem>& items) {
    if (options.json || !userCanAnswer()) {
        printProblem(localized("Nothing was deleted. Add --yes to delete without asking."));
        co_return static_cast<int>(ExitStatus::usage);
    }
    for (const auto& item : items)
        printNotice(recordingRow(item, {}));
    const std::string question = localized(
        "Delete these sessions (%lld) with sound and transcript?", {std::to_string(items.size())});
    Task<Answer> asking = ask(program.host, question, Answer::no);
    switch (co_await asking) {
    case Answer::yes:
        co_return std::nullopt;
    case Answer::no:
        co_return static_cast<int>(ExitStatus::ok);
    case Answer::interrupted:
        break;
    }
    co_return static_cast<int>(ExitStatus::interrupted);
}

} // namespace

Task<int> setNote(Program& program, const TerminalOptions& options, SetNoteCommand command) {
    const auto chosen = chosenRecording(program, command.id);
    if (const int* problem = std::get_if<int>(&chosen))
        co_return *problem;
    if (const auto problem = lockDataFolder(program))
        co_return static_cast<int>(*problem);
    HistoryItem item = std::get<HistoryItem>(chosen);
    if (!program.catalog.setNote(command.note, item.id)) {
        printProblem(localized("The note could not be saved."));
        co_return static_cast<int>(ExitStatus::cannotWrite);
    }
    item.note = command.note;
    reportChange(options, "note", item, recordingRow(item, {}));
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> deleteRecordings(Program& program, const TerminalOptions& options,
                           DeleteRecordingsCommand command) {
    const auto chosen = chosenRecordings(program, command.ids);
    if (const int* problem = std::get_if<int>(&chosen))
        co_return *problem;
    const auto& items = std::get<std::vector<HistoryItem>>(chosen);
    if (const auto problem = lockDataFolder(program))
        co_return static_cast<int>(*problem);
    if (!command.isConfirmed) {
        Task<std::optional<int>> asking = confirmDeletion(program, options, items);
        if (const auto answer = co_await asking)
            co_return *answer;
    }
    ExitStatus status = ExitStatus::ok;
    for (const auto& item : items) {
        if (!program.catalog.deleteRecording(item.id)) {
            printProblem(localized("%@ could not be deleted.", {item.id.text()}));
            status = ExitStatus::cannotWrite;
            break;
        }
        reportChange(options, "deleted", item, localized("Deleted: %@", {recordingRow(item, {})}));
    }
    Task<void> erasing = program.search.eraseTraces();
    co_await erasing;
    co_return static_cast<int>(status);
}

} // namespace tessarune
