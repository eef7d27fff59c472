#include "Terminal/history/HistoryCommands.h"

#include "Terminal/history/DiagnosticsCommands.h"
#include "Terminal/history/ExportCommand.h"
#include "Terminal/history/ImportCommand.h"
#include "Terminal/history/PlayCommand.h"
#include "Terminal/history/RecordingChanges.h"
#include "Terminal/history/RecordingCommands.h"
#include "Terminal/history/RefineCommand.h"
#include "Terminal/history/SearchCommands.h"
#include "Terminal/history/UsageCommands.h"
#include "Terminal/history/WordCommands.h"

namespace tessarune {

namespace {

struct HistoryDispatch {
    Program& program;
    const TerminalOptions& options;

    Task<int> operator()(const ListRecordingsCommand&) const {
        return listRecordings(program, options);
    }
    Task<int> operator()(const ShowRecordingCommand& command) const {
        return showRecording(program, options, command.id);
    }
    Task<int> operator()(const CountWordsCommand& command) const {
        return countWords(program, options, command.id);
    }
    Task<int> operator()(const ExportRecordingCommand& command) const {
        return exportRecording(program, options, command);
    }
    Task<int> operator()(const PlayCommand& command) const {
        return playRecording(program, options, command);
    }
    Task<int> operator()(const SetNoteCommand& command) const {
        return setNote(program, options, command);
    }
    Task<int> operator()(const DeleteRecordingsCommand& command) const {
        return deleteRecordings(program, options, command);
    }
    Task<int> operator()(const ImportFilesCommand& command) const {
        return importFiles(program, options, command.files);
    }
    Task<int> operator()(const RefineCommand& command) const {
        return refineRecording(program, options, command);
    }
    Task<int> operator()(const SearchRecordingsCommand& command) const {
        return searchRecordings(program, options, command.text);
    }
    Task<int> operator()(const ShowUsageCommand& command) const {
        return showUsage(program, options, command.by);
    }
    Task<int> operator()(const DiagnosticsCommand& command) const {
        return runDiagnosticsCommand(program, options, command);
    }
};

} // namespace

Task<int> runHistoryCommand(Program& program, const TerminalOptions& options,
                            const HistoryCommand& command) {
    return std::visit(HistoryDispatch{program, options}, command);
}

} // namespace tessarune
