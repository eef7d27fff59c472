#include "Terminal/history/RefineCommand.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationChoice.h"
#include "Terminal/WorkProgress.h"
#include "Terminal/history/RecordingChoice.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace tessarune {

namespace {

using Step = HistoryRefinementService::Progress::Step;
using RefinementStatus = HistoryRefinementOutcome::Status;
using RefinementTranslation = HistoryRefinementOutcome::Translation;

std::string doingText(const HistoryRefinementService::Progress& progress) {
    return progress.step == Step::translating ? localized("Translating")
                                              : localized("Transcribing");
}

std::string stepName(const HistoryRefinementService::Progress& progress) {
    return progress.step == Step::translating ? "translating" : "transcribing";
}

std::string nameOf(RefinementStatus status) {
    switch (status) {
    case RefinementStatus::finished:
        return "finished";
    case RefinementStatus::deleted:
        return "deleted";
    case RefinementStatus::cancelled:
        return "cancelled";
    case RefinementStatus::failed:
        break;
    }
    return "failed";
}

std::string nameOf(RefinementTranslation translation) {
    switch (translation) {
    case RefinementTranslation::none:
        break;
    case RefinementTranslation::saved:
        return "saved";
    case RefinementTranslation::cancelled:
        return "cancelled";
    case RefinementTranslation::failed:
        return "failed";
    }
    return "none";
}

void printOutcome(const UUID& id, const HistoryRefinementOutcome& outcome) {
    nlohmann::ordered_json object = {{"type", "refined"},
                                     {"id", id.text()},
                                     {"status", nameOf(outcome.status)},
                                     {"model", outcome.model},
                                     {"sentences", outcome.sentences},
                                     {"kept", outcome.keptOfFormer},
                                     {"translation", nameOf(outcome.translation)}};
    const std::string problem =
        outcome.problem.empty() ? outcome.translationProblem : outcome.problem;
    if (!problem.empty())
        object["problem"] = problem;
    printJSON(object);
}

void reportRefinement(const TerminalOptions& options, const UUID& id,
                      const HistoryRefinementOutcome& outcome) {
    reportOutcome(options, id, outcome,
                  localized("Transcribed again with %@: --show %@", {outcome.model, shortID(id)}),
                  localized("The transcript stays as it was: %@", {outcome.problem}));
}

} // namespace

void reportOutcome(const TerminalOptions& options, const UUID& id,
                   const HistoryRefinementOutcome& outcome, const std::string& good,
                   const std::string& bad) {
    if (options.json)
        return printOutcome(id, outcome);
    if (outcome.status == RefinementStatus::failed)
        return printProblem(bad);
    if (outcome.status == RefinementStatus::deleted)
        return printProblem(localized("The recording was deleted."));
    if (outcome.status == RefinementStatus::cancelled)
        return printNotice(localized("The transcript stays as it was."));
    if (!outcome.brokenOff.empty())
        printNotice(localized("The sound was interrupted: %@", {outcome.brokenOff}));
    if (outcome.translation == RefinementTranslation::failed)
        printProblem(
            localized("The translation stays as it was: %@", {outcome.translationProblem}));
    if (!options.quiet)
        printNotice(good);
}

ExitStatus statusOf(const HistoryRefinementOutcome& outcome) {
    if (outcome.status == RefinementStatus::cancelled ||
        outcome.translation == RefinementTranslation::cancelled)
        return ExitStatus::interrupted;
    if (outcome.status == RefinementStatus::deleted)
        return ExitStatus::noSuchRecording;
    if (outcome.translation == RefinementTranslation::failed)
        return ExitStatus::noModel;
    using Failure = HistoryRefinementOutcome::Failure;
    switch (outcome.failure) {
    case Failure::none:
        break;
    case Failure::nothingUnderstood:
    case Failure::sound:
        return ExitStatus::unreadableFile;
    case Failure::disk:
        return ExitStatus::cannotWrite;
    case Failure::recogniser:
        return ExitStatus::noModel;
    }
    return ExitStatus::ok;
}

Task<HistoryRefinementOutcome> refineWithProgress(Program& program, TerminalOptions options,
                                                  HistoryRefinementRequest request,
                                                  std::string model, std::stop_token stop) {
    const UUID id = request.recordingID;
    WorkProgress progress(options, {{"type", "refinement"}, {"id", id.text()}});
    const auto token = program.refinement.jobs().onDidChange([&](const auto& jobs) {
        const auto job = jobs.find(id);
        if (job != jobs.end() && job->second.step != Step::waiting)
            progress.report(doingText(job->second), stepName(job->second), job->second.fraction);
    });
    Task<HistoryRefinementOutcome> refining =
        program.refinement.refine(std::move(request), std::move(model), stop);
    const HistoryRefinementOutcome outcome = co_await refining;
    program.refinement.jobs().remove(token);
    co_return outcome;
}

HistoryRefinementRequest refinementRequest(const Program& program, const TerminalOptions& options,
                                           const UUID& id, const std::string& audioPath) {
    const AppSettings& settings = program.settings;
    HistoryRefinementRequest request =
        HistoryRefinementRequest::current(settings, id, audioPath)
            .value_or(HistoryRefinementRequest{.recordingID = id, .audioPath = audioPath});
    const LiveTranslationSettingsSnapshot wanted =
        LiveTranslationSettingsSnapshot::current(settings);
    if (!TranslationSupport::isAppleBackend(wanted.translationBackend))
        return request;
    const TranslationChoice choice = chooseTranslation(wanted, wanted.translationTargetLanguage,
                                                       program.translationModels.list());
    if (choice.failure.empty())
        return request;
    if (!options.quiet)
        printNotice(bothSentences(localized("The transcript is not translated."), choice.failure));
    request.translationBackend = TranslationSupport::disabledBackendName;
    return request;
}

Task<void> refineAfterSession(Program& program, const TerminalOptions& options,
                              HistoryRefinementRequest request) {
    printNotice(localized(
        "The recording is being transcribed again. Ctrl-C keeps the current transcript."));
    const UUID id = request.recordingID;
    std::stop_source stop;
    SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    Task<HistoryRefinementOutcome> refining =
        refineWithProgress(program, options, std::move(request),
                           HistoryRefinementService::bestModel, stop.get_token());
    const HistoryRefinementOutcome outcome = co_await refining;
    reportRefinement(options, id, outcome);
}

Task<int> refineRecording(Program& program, const TerminalOptions& options, RefineCommand command) {
    const auto chosen = chosenRecording(program, command.id);
    if (const int* status = std::get_if<int>(&chosen))
        co_return *status;
    const HistoryItem item = std::get<HistoryItem>(chosen);
    if (const auto problem = prepareDataFolder(program, item.id))
        co_return static_cast<int>(*problem);
    HistoryRefinementRequest request =
        refinementRequest(program, options, item.id, item.filePath.value_or(""));
    std::stop_source stop;
    SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    const std::string model =
        command.model.empty() ? HistoryRefinementService::bestModel : command.model;
    Task<HistoryRefinementOutcome> refining =
        refineWithProgress(program, options, std::move(request), model, stop.get_token());
    const HistoryRefinementOutcome outcome = co_await refining;
    reportRefinement(options, item.id, outcome);
    co_return static_cast<int>(statusOf(outcome));
}

} // namespace tessarune
