#include "Terminal/Program.h"

#include "Terminal/CaptionsRun.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/LanguageCommands.h"
#include "Terminal/ModelCommands.h"
#include "Terminal/SettingsCommands.h"
#include "Terminal/SourcesCommand.h"
#include "Terminal/history/HistoryCommands.h"
#include "TessaruneCore/text/Localization.h"

#include <unistd.h>

#include <utility>

namespace tessarune {

namespace {

/// Runs a command's task, then quits the main loop.
Task<void> runThenQuit(Program& program, Task<int> task) {
    const int status = co_await task;
    program.loop.quit(status);
}

Task<int> refuseTerminalInput() {
    printProblem(localized(
        "--source - reads sound from standard input, but here standard input is a terminal."));
    co_return static_cast<int>(ExitStatus::usage);
}

struct Dispatch {
    Program& program;
    const TerminalOptions& options;

    Task<int> operator()(const CaptionsCommand& command) const {
        const auto* file = std::get_if<FileSource>(&command.source);
        const bool isStandardInput = file && file->path == FileSource::standardInput;
        return isStandardInput && isatty(STDIN_FILENO) ? refuseTerminalInput()
                                                       : runCaptions(program, options, command);
    }
    Task<int> operator()(const ListSourcesCommand&) const { return listSources(program, options); }
    Task<int> operator()(const ListModelsCommand&) const { return listModels(program, options); }
    Task<int> operator()(const InstallModelCommand& command) const {
        return installModel(program, options, command.name);
    }
    Task<int> operator()(const RemoveModelCommand& command) const {
        return removeModel(program, command.name);
    }
    Task<int> operator()(const ListLanguagesCommand&) const {
        return listLanguages(program, options);
    }
    Task<int> operator()(const DownloadLanguageCommand& command) const {
        return downloadLanguage(program, options, command.id);
    }
    Task<int> operator()(const RemoveLanguageCommand& command) const {
        return removeLanguage(program, command.id);
    }
    Task<int> operator()(const TestTranslationCommand& command) const {
        return testTranslation(program, options, command.target);
    }
    Task<int> operator()(const HistoryCommand& command) const {
        return runHistoryCommand(program, options, command);
    }
    Task<int> operator()(const ShowSettingsCommand&) const {
        return showSettings(program, options);
    }
    Task<int> operator()(const SetCommand& command) const {
        return changeSettings(program, command);
    }
};

/// Says that the settings cannot be read, unless the command itself does.
void reportUnreadableSettings(const Program& program, const TerminalOptions& options) {
    const auto* captions = std::get_if<CaptionsCommand>(&options.command);
    const bool isReported = (captions && captions->records) ||
                            std::holds_alternative<ShowSettingsCommand>(options.command) ||
                            std::holds_alternative<SetCommand>(options.command);
    if (const std::string& problem = program.storedDefaults.problem();
        !problem.empty() && !isReported)
        printProblem(localized("The settings cannot be read: %@.", {problem}));
}

} // namespace

int run(Program& program, const TerminalOptions& options) {
    reportUnreadableSettings(program, options);
    Task<int> task = std::visit(Dispatch{program, options}, options.command);
    spawn(Executor::main(program.host), runThenQuit(program, std::move(task)));
    return program.loop.run();
}

} // namespace tessarune
