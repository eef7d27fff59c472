#include "Terminal/history/DiagnosticsCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/DownloadProgress.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Question.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/diagnostics/DiagnosticsCatalog.h"
#include "Tessarune/diagnostics/DiagnosticsRunContents.h"
#include "Tessarune/diagnostics/RunVerification.h"
#include "Tessarune/platform/archive/TarArchive.h"
#include "Tessarune/shell/ChosenFile.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

namespace tessarune {

namespace {

using RunJSON = nlohmann::ordered_json;

constexpr std::size_t levelColumns = 8;
/// As wide as `sizeCell` and two blanks, so that a description is aligned with the path above it.
constexpr const char* descriptionIndent = "           ";

std::string lengthText(const DiagnosticsRunContents& run) {
    if (!run.isFinished)
        return localized("(not finished)");
    if (!run.durationSeconds)
        return {};
    constexpr long long minute = 60;
    const auto seconds = static_cast<long long>(*run.durationSeconds);
    const std::string rest = std::to_string(seconds % minute);
    return std::to_string(seconds / minute) + ":" + std::string(rest.size() < 2, '0') + rest;
}

std::string runRow(const DiagnosticsRunContents& run) {
    const std::string level = run.level.empty() ? "—" : run.level;
    return run.id + "  " + Text::padded(level, levelColumns) + "  " + sizeCell(run.bytes()) + "  " +
           lengthText(run);
}

RunJSON runObject(const char* type, const DiagnosticsRunContents& run) {
    RunJSON object{{"type", type},
                   {"run", run.id},
                   {"directory", run.directory.string()},
                   {"level", run.level},
                   {"full", run.isFull},
                   {"finished", run.isFinished},
                   {"segments", run.committedSegments},
                   {"lostRecords", run.lostRecords},
                   {"recordingID", run.recordingID},
                   {"bytes", run.bytes()}};
    if (run.startedWall)
        object["startedAt"] = *run.startedWall;
    if (run.durationSeconds)
        object["duration"] = *run.durationSeconds;
    return object;
}

RunJSON fileObject(const DiagnosticsRunContents& run, const DiagnosticsRunContents::File& file) {
    RunJSON object{{"path", file.path}, {"bytes", file.bytes}, {"text", file.holdsText()}};
    if (file.artifact)
        object["description"] = DiagnosticsRunLayout::description(*file.artifact, run.isFull);
    return object;
}

/// Finds the run whose name begins with `name`, in the data folder. If `mayBeAnywhere`, `name` may
/// also be the path of a run's folder. If there is no such run or more than one, prints that and
/// returns the exit status.
std::variant<DiagnosticsRun, int> chosenRun(Program& program, const std::string& name,
                                            bool mayBeAnywhere) {
    const std::filesystem::path folder(name);
    const auto found = folder.has_parent_path()
                           ? std::vector<DiagnosticsRun>()
                           : DiagnosticsCatalog(program.files, program.paths).named(name);
    if (found.empty() && mayBeAnywhere && program.files.isDirectory(folder)) {
        const bool endsInSlash = !folder.has_filename();
        DiagnosticsRun run{.directory = endsInSlash ? folder.parent_path() : folder};
        if (DiagnosticsRunContents::read(program.files, run.directory).isRun)
            return run;
        printProblem(localized("%@ is not a diagnostics run.", {run.directory.string()}));
        return static_cast<int>(ExitStatus::noSuchRecording);
    }
    if (found.size() == 1)
        return found.front();
    if (found.empty()) {
        printProblem(localized("There is no run '%@'; --diagnostics list lists them.", {name}));
    } else {
        printProblem(localized("The names of several runs begin with '%@':", {name}));
        for (const auto& run : found)
            printNotice(run.id());
    }
    return static_cast<int>(ExitStatus::noSuchRecording);
}

ExitStatus list(Program& program, const TerminalOptions& options) {
    const auto runs = DiagnosticsCatalog(program.files, program.paths).runs();
    for (const auto& run : runs) {
        const auto contents = DiagnosticsRunContents::read(program.files, run.directory);
        if (options.json)
            printJSON(runObject("diagnosticsRun", contents));
        else
            printText(runRow(contents));
    }
    if (runs.empty() && !options.json && !options.quiet)
        printNotice(localized("There are no diagnostics runs."));
    return ExitStatus::ok;
}

ExitStatus show(const TerminalOptions& options, const DiagnosticsRunContents& run) {
    if (options.json) {
        RunJSON object = runObject("diagnosticsRun", run);
        object["files"] = RunJSON::array();
        for (const auto& file : run.files)
            object["files"].push_back(fileObject(run, file));
        printJSON(object);
        return ExitStatus::ok;
    }
    printText(runRow(run));
    printText(run.directory.string());
    if (!run.recordingID.empty())
        printText(localized("Recording: %@", {run.recordingID}));
    if (run.lostRecords > 0)
        printText(localized("Lost records (the disk was too slow or full): %lld",
                            {std::to_string(run.lostRecords)}));
    printText("");
    for (const auto& file : run.files) {
        printText(sizeCell(file.bytes) + "  " + file.path);
        if (file.artifact)
            printText(descriptionIndent +
                      std::string(DiagnosticsRunLayout::description(*file.artifact, run.isFull)));
    }
    return ExitStatus::ok;
}

ExitStatus verify(Program& program, const TerminalOptions& options, const DiagnosticsRun& run) {
    const auto result = RunVerification::verify(program.files, run.directory);
    if (options.json)
        printJSON({{"type", "verification"},
                   {"run", run.id()},
                   {"matches", result.matches()},
                   {"segments", result.rows},
                   {"problem", result.problem}});
    else if (result.matches())
        printText(localized("%@: the replay produces exactly the captions of the session (%lld).",
                            {run.id(), std::to_string(result.rows)}));
    else
        printProblem(run.id() + ": " + result.problem);
    return result.matches() ? ExitStatus::ok : ExitStatus::differs;
}

Task<ExitStatus> remove(Program& program, const TerminalOptions& options,
                        DiagnosticsCommand command, DiagnosticsRun run) {
    if (const auto problem = lockDataFolder(program))
        co_return *problem;
    if (!command.isConfirmed) {
        if (options.json || !userCanAnswer()) {
            printProblem(localized("Nothing was deleted. Add --yes to delete without asking."));
            co_return ExitStatus::usage;
        }
        Task<Answer> asking =
            ask(program.host, localized("Delete the diagnostics run %@?", {run.id()}), Answer::no);
        const Answer answer = co_await asking;
        if (answer != Answer::yes)
            co_return answer == Answer::no ? ExitStatus::ok : ExitStatus::interrupted;
    }
    if (!DiagnosticsCatalog(program.files, program.paths).remove(run)) {
        printProblem(localized("%@ could not be deleted.", {run.id()}));
        co_return ExitStatus::cannotWrite;
    }
    if (options.json)
        printJSON({{"type", "deleted"}, {"run", run.id()}});
    else if (!options.quiet)
        printText(localized("Deleted: %@", {run.id()}));
    co_return ExitStatus::ok;
}

void reportPacked(const TerminalOptions& options, const DiagnosticsRunContents& run,
                  const std::filesystem::path& to, bool withText) {
    if (options.json) {
        RunJSON object{{"type", "packed"}, {"run", run.id}, {"file", to.string()}};
        object["files"] = object["leftOut"] = RunJSON::array();
        for (const auto& file : run.files)
            object[withText || !file.holdsText() ? "files" : "leftOut"].push_back(file.path);
        printJSON(object);
        return;
    }
    for (const auto& file : run.files) {
        if (withText || !file.holdsText())
            printText(sizeCell(file.bytes) + "  " + file.path);
    }
    const auto leftOut = withText ? 0 : std::ranges::count_if(run.files, [](const auto& file) {
        return file.holdsText();
    });
    if (leftOut > 0 && !options.quiet)
        printNotice(localized("Files left out because they may contain what was said: %lld. Add "
                              "--with-text to include them.",
                              {std::to_string(leftOut)}));
    if (!options.quiet)
        printText(localized("Saved to %@", {to.string()}));
}

Task<ExitStatus> pack(Program& program, const TerminalOptions& options, DiagnosticsCommand command,
                      DiagnosticsRunContents run) {
    const std::filesystem::path to =
        ChosenFile::followingLink(command.to.empty() ? run.id + ".tar.gz" : command.to);
    Task<ExitStatus> permitting = permissionToWrite(
        program.host, program.files, program.paths.appSupportBase(), to, command.isConfirmed);
    if (const ExitStatus found = co_await permitting; found != ExitStatus::ok)
        co_return found;
    std::vector<TarArchive::Entry> entries;
    for (const auto& file : run.files) {
        if (command.withText || !file.holdsText())
            entries.push_back({run.id + "/" + file.path, run.directory / file.path});
    }
    try {
        TarArchive::write(to, entries);
    } catch (const std::exception& error) {
        printProblem(error.what());
        co_return ExitStatus::cannotWrite;
    }
    reportPacked(options, run, to, command.withText);
    co_return ExitStatus::ok;
}

Task<ExitStatus> dispatch(Program& program, const TerminalOptions& options,
                          DiagnosticsCommand command) {
    using Action = DiagnosticsCommand::Action;
    if (command.action == Action::list)
        co_return list(program, options);
    const auto chosen = chosenRun(program, command.run, command.action != Action::remove);
    if (const int* problem = std::get_if<int>(&chosen))
        co_return static_cast<ExitStatus>(*problem);
    const auto& run = std::get<DiagnosticsRun>(chosen);
    if (command.action == Action::verify)
        co_return verify(program, options, run);
    if (command.action == Action::remove) {
        Task<ExitStatus> removing = remove(program, options, command, run);
        co_return co_await removing;
    }
    auto contents = DiagnosticsRunContents::read(program.files, run.directory);
    if (command.action == Action::show)
        co_return show(options, contents);
    Task<ExitStatus> packing = pack(program, options, command, std::move(contents));
    co_return co_await packing;
}

} // namespace

Task<int> runDiagnosticsCommand(Program& program, const TerminalOptions& options,
                                DiagnosticsCommand command) {
    Task<ExitStatus> running = dispatch(program, options, std::move(command));
    co_return static_cast<int>(co_await running);
}

} // namespace tessarune
