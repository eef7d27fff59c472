#include "Terminal/history/ExportCommand.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Question.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/shell/ChosenFile.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

using Format = HistoryExportFormat;
using Content = HistoryTranscriptExportContent;

constexpr const char* standardOutput = "-";

int status(ExitStatus value) {
    return static_cast<int>(value);
}

std::string contentName(Content content) {
    switch (content) {
    case Content::source:
        return "source";
    case Content::bilingual:
        return "bilingual";
    case Content::translation:
        return "translation";
    }
    return {};
}

ExitStatus statusOf(HistoryExportError::Kind kind) {
    return kind == HistoryExportError::Kind::failed ? ExitStatus::cannotWrite
                                                    : ExitStatus::unreadableFile;
}

/// Writes the document unchanged, but without control characters if it goes to a terminal. Its note
/// may contain such characters, because a note may be the name of an imported file.
int writeToStandardOutput(const std::string& document) {
    const std::string& bytes = isatty(STDOUT_FILENO) ? Text::printable(document) : document;
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    return status(ExitStatus::ok);
}

int reportWritten(Program& program, const TerminalOptions& options,
                  const HistoryExportRequest& request, const std::filesystem::path& to) {
    const std::uint64_t size = program.files.size(to);
    if (options.json) {
        nlohmann::ordered_json object{
            {"type", "export"},
            {"id", request.recording.id.text()},
            {"format", HistoryExport::fileExtension(request.format)},
            {"content", request.format == Format::m4a ? "audio" : contentName(request.content)},
            {"file", to.string()},
            {"bytes", size}};
        printJSON(object);
    } else if (!options.quiet) {
        printText(localized("Saved to %@", {to.string()}));
    }
    return status(ExitStatus::ok);
}

Task<int> write(Program& program, const TerminalOptions& options, HistoryExportRequest request,
                std::filesystem::path to) {
    std::stop_source stop;
    const SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    try {
        Task<void> writing = program.historyExport.write(request, to, {}, stop.get_token());
        co_await writing;
    } catch (const CancellationError&) {
        co_return status(ExitStatus::interrupted);
    }
    co_return reportWritten(program, options, request, to);
}

Task<int> print(Program& program, HistoryExportRequest request) {
    if (request.format == Format::pdf && isatty(STDOUT_FILENO)) {
        printProblem(
            localized("A PDF cannot be shown in a terminal; write it to a file or a pipe."));
        co_return status(ExitStatus::usage);
    }
    Task<std::string> making = program.historyExport.document(std::move(request));
    const std::string bytes = co_await making;
    co_return writeToStandardOutput(bytes);
}

Task<int> exportTo(Program& program, const TerminalOptions& options,
                   const ExportRecordingCommand& command, HistoryExportRequest request) {
    if (command.to == standardOutput) {
        Task<int> printing = print(program, std::move(request));
        co_return co_await printing;
    }
    const std::filesystem::path to = ChosenFile::followingLink(
        command.to.empty() ? HistoryExport::suggestedFilename(request) : command.to);
    Task<ExitStatus> permitting = permissionToWrite(
        program.host, program.files, program.paths.appSupportBase(), to, command.replaces);
    if (const ExitStatus found = co_await permitting; found != ExitStatus::ok)
        co_return status(found);
    Task<int> writing = write(program, options, std::move(request), to);
    co_return co_await writing;
}

} // namespace

Task<int> exportRecording(Program& program, const TerminalOptions& options,
                          ExportRecordingCommand command) {
    const auto chosen = chosenRecording(program, command.id);
    if (const int* problem = std::get_if<int>(&chosen))
        co_return *problem;
    HistoryExportRequest request{std::get<HistoryItem>(chosen), command.format, Content::source};
    request.content = command.content.value_or(
        request.recording.hasBilingualTranscript ? Content::bilingual : Content::source);
    std::optional<HistoryExportError> problem;
    try {
        Task<int> exporting = exportTo(program, options, command, std::move(request));
        co_return co_await exporting;
    } catch (const HistoryExportError& error) {
        problem = error;
    }
    printProblem(problem->what());
    co_return status(statusOf(problem->kind()));
}

} // namespace tessarune
