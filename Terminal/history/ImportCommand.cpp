#include "Terminal/history/ImportCommand.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/WorkProgress.h"
#include "Terminal/history/RecordingChoice.h"
#include "Terminal/history/RefineCommand.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <system_error>

namespace tessarune {

namespace {

/// Imports the files of one command and reports each.
class ImportRun {
  public:
    ImportRun(Program& program, const TerminalOptions& options)
        : program_(program),
          options_(options),
          signals_(program.host, [this] { stop_.request_stop(); }) {}

    bool isStopped() const { return stop_.stop_requested(); }

    /// Copies one file, transcribes it and translates it.
    Task<ExitStatus> import(std::filesystem::path file) {
        std::optional<RecordingMetadata> recording;
        ExitStatus status = ExitStatus::ok;
        try {
            Task<RecordingMetadata> copying = copy(file);
            recording = co_await copying;
        } catch (const CancellationError&) {
            status = ExitStatus::interrupted;
        } catch (const MediaFileError& error) {
            status = reportProblem(file, error.what(), ExitStatus::unreadableFile);
        } catch (const std::system_error& error) {
            status = reportProblem(file, error.what(), ExitStatus::cannotWrite);
        }
        if (!recording)
            co_return status;
        if (!program_.imports.enter(*recording))
            co_return reportProblem(file, localized("the recordings cannot be written"),
                                    ExitStatus::cannotWrite);
        Task<HistoryRefinementOutcome> transcribing = refineWithProgress(
            program_, options_,
            refinementRequest(program_, options_, recording->id, recording->filePath),
            HistoryRefinementService::bestModel, stop_.get_token());
        HistoryRefinementOutcome outcome = co_await transcribing;
        // The texts name the imported file instead of its copy in the data folder.
        for (std::string* text : {&outcome.problem, &outcome.brokenOff})
            *text = naming(file, recording->filePath, *text);
        if (statusOf(outcome) == ExitStatus::interrupted) {
            program_.catalog.deleteRecording(recording->id);
            Task<void> erasing = program_.search.eraseTraces();
            co_await erasing;
            co_return ExitStatus::interrupted;
        }
        reportImported(file, recording->id, outcome);
        co_return statusOf(outcome);
    }

  private:
    Task<RecordingMetadata> copy(std::filesystem::path file) {
        const auto& named = file.has_filename() ? file : file.parent_path(); // for "talk.wav/"
        const std::string name = Text::printableLine(named.filename().string());
        WorkProgress progress(options_, {{"type", "import"}, {"file", file.string()}});
        const auto token = program_.imports.copied().onDidChange([&](const auto& copied) {
            if (copied)
                progress.report(localized("Importing %@", {name}), "copying", *copied);
        });
        Task<RecordingMetadata> making = program_.imports.makeRecording(file, stop_.get_token());
        std::optional<RecordingMetadata> made;
        std::exception_ptr failure;
        try {
            made = co_await making;
        } catch (...) {
            failure = std::current_exception();
        }
        program_.imports.copied().remove(token);
        if (failure)
            std::rethrow_exception(failure);
        co_return *made;
    }

    ExitStatus reportProblem(const std::filesystem::path& file, const std::string& problem,
                             ExitStatus status) const {
        printProblem(localized("%@ was not imported: %@",
                               {Text::printableLine(file.string()), Text::printableLine(problem)}));
        if (options_.json)
            printJSON({{"type", "imported"}, {"file", file.string()}, {"problem", problem}});
        return status;
    }

    void reportImported(const std::filesystem::path& file, const UUID& id,
                        const HistoryRefinementOutcome& outcome) const {
        if (options_.json)
            printJSON({{"type", "imported"}, {"file", file.string()}, {"id", id.text()}});
        reportOutcome(options_, id, outcome, localized("Imported: --show %@", {shortID(id)}),
                      localized("%@ was imported without a transcript: %@",
                                {Text::printableLine(file.string()), outcome.problem}));
    }

    Program& program_;
    const TerminalOptions& options_;
    std::stop_source stop_;
    SignalWatch signals_;
};

} // namespace

Task<int> importFiles(Program& program, const TerminalOptions& options,
                      std::vector<std::filesystem::path> files) {
    if (const std::string problem = program.speechModelProblem(); !problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::noModel);
    }
    if (const auto problem = prepareDataFolder(program))
        co_return static_cast<int>(*problem);
    ImportRun run(program, options);
    ExitStatus first = ExitStatus::ok;
    for (const std::filesystem::path& file : files) {
        Task<ExitStatus> importing = run.import(file);
        const ExitStatus status = co_await importing;
        if (first == ExitStatus::ok || run.isStopped())
            first = status;
        if (run.isStopped())
            break;
    }
    co_return static_cast<int>(first);
}

} // namespace tessarune
