#include "Tessarune/translation/CommittedTranslationUnitProcessor.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>
#include <unordered_set>

namespace tessarune {

namespace {

TranslationObservation observationOf(const CommittedTranslationUnit& unit,
                                     const std::string& target, double startedAt,
                                     const TranslationAttemptDiagnostics& diagnostics) {
    TranslationObservation observation;
    observation.t = startedAt;
    observation.translationUnitID = unit.translationUnitID;
    observation.segmentID = unit.resultSegmentID;
    observation.segmentIDs = unit.segmentIDs;
    observation.resultSegmentID = unit.resultSegmentID;
    observation.sourceText = unit.sourceText;
    observation.targetLanguage = target;
    if (unit.committedAt)
        observation.queueDelaySeconds = std::max(0.0, startedAt - *unit.committedAt);
    observation.diagnostics = diagnostics;
    return observation;
}

} // namespace

void LiveTranscriptTranslation::startCommittedRun(bool forceTail) {
    runtime_->cancelGhostTask();
    if (const auto context = prepareCommittedTranslationRunContext())
        startCommittedTranslationTask(*context, forceTail);
}

/// The context for a run; `nullopt` if no run may start now. Creates the translator and starts the
/// preparation of the pair, if the run needs them.
std::optional<TranslationRunContext>
LiveTranscriptTranslation::prepareCommittedTranslationRunContext() {
    using namespace TranslationSupport;
    const auto settings = runtime_->settings();
    const std::string& backend = settings.translationBackend;
    if (isDisabledBackend(backend))
        return std::nullopt;
    if (!isAppleBackend(backend)) {
        reportBlocked(backendNotConnectedMessage(backend), backendNotConnectedSentence(backend));
        return std::nullopt;
    }
    if (runtime_->hasCommittedTask())
        return std::nullopt;
    auto context = TranslationRunContext::forTarget(settings.translationTargetLanguage);
    if (context.passThrough)
        return context;
    if (!runtime_->translator()) {
        reportBlocked(localized(appleOfflineUnsupportedMessage),
                      localized(appleOfflineUnsupportedSentence));
        return std::nullopt;
    }
    prewarmCurrentTranslationPair("translation.prepare");
    return context;
}

/// Reports why no run can start. The short `message` becomes the translation status, and `sentence`
/// becomes the session's status.
void LiveTranscriptTranslation::reportBlocked(const std::string& message,
                                              const std::string& sentence) {
    setPreparationIdle();
    setTranslationStatusMessage(message);
    captions_->setStatusMessage(sentence);
    refresh("translation.prepare.blocked");
}

void LiveTranscriptTranslation::startCommittedTranslationTask(const TranslationRunContext& context,
                                                              bool forceTail) {
    runtime_->startCommittedTask(
        [self = shared_from_this(), context, forceTail](std::stop_token stop) {
            return runQueue(self, context, forceTail, std::move(stop));
        });
}

/// Translates the pending units one by one. Ends when none is pending, when translation is off, or
/// when `process` returns false. The next commit starts a new run.
Task<void> LiveTranscriptTranslation::runQueue(Self self, TranslationRunContext context,
                                               bool forceTail, std::stop_token stop) {
    const auto newID = [self] { return self->runtime_->newID(); };
    while (!TranslationSupport::isDisabledBackend(self->runtime_->settings().translationBackend)) {
        const std::optional<Unit> unit = CommittedTranslationUnitPlanner::nextPendingUnit(
            self->captions_->committedSegments(), forceTail, newID);
        if (!unit ||
            !co_await CommittedTranslationUnitProcessor::process(self, *unit, context, stop))
            co_return;
    }
}

void LiveTranscriptTranslation::cancelCommittedTranslationTask() {
    runtime_->cancelCommittedTask();
    refresh("translation.committed.cancelled");
}

void LiveTranscriptTranslation::recordCommittedTranslationStart(
    const Unit& unit, const std::string& target, double startedAt,
    const TranslationAttemptDiagnostics& diagnostics) {
    captions_->appendTranslationObservation(observationOf(unit, target, startedAt, diagnostics));
}

/// Changes the rows of a unit and records the outcome of the attempt that began at `outcome.t`.
void LiveTranscriptTranslation::applyOutcome(
    TranslationObservation outcome, const std::function<void(std::span<CaptionSegment>)>& change) {
    const double before = runtime_->now();
    captions_->changeCommittedSegments(change);
    const double after = runtime_->now();
    outcome.diagnostics.applySeconds = after - before;
    outcome.durationSeconds = after - std::exchange(outcome.t, after);
    captions_->appendTranslationObservation(outcome);
}

void LiveTranscriptTranslation::applyCommittedTranslationSuccess(
    const Unit& unit, const std::string& target, const std::string& translatedText,
    double startedAt, const TranslationAttemptDiagnostics& diagnostics) {
    auto observation = observationOf(unit, target, startedAt, diagnostics);
    observation.phase = TranslationObservation::Phase::success;
    observation.translatedText = translatedText;
    applyOutcome(std::move(observation), [&](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::applySuccess(unit.translationUnitID, unit.segmentIDs,
                                                unit.resultSegmentID, translatedText, segments);
    });

    clearLanguageResourceFailures();
    clearGhostIfCovered(unit);
    setPreparationIdle();
    setTranslationStatusMessage("");
    const LiveCaptionDisplayTranslationPatch patch{unit.translationUnitID, unit.segmentIDs,
                                                   unit.resultSegmentID, translatedText};
    captions_->refreshCaptionDisplay("translation.committed.success", &patch);
    captions_->updatePersistedTranscriptIfStopped();
}

/// One success proves that the files are installed, so units that failed because of missing files
/// become pending again.
void LiveTranscriptTranslation::clearLanguageResourceFailures() {
    const std::unordered_set<UUID> resolved = std::exchange(runtime_->languageResourceFailures, {});
    if (resolved.empty())
        return;
    captions_->changeCommittedSegments([&](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::clearErrors(segments, [&](const CaptionSegment& segment) {
            return segment.translationUnitID && resolved.contains(*segment.translationUnitID);
        });
    });
    runtime_->committedHealth.resolveFailures(resolved);
    refresh("translation.retry"); // shows that these rows no longer belong to units
}

void LiveTranscriptTranslation::clearGhostIfCovered(const Unit& unit) {
    if (!runtime_->clearGhostSourceIfMatches(unit.sourceText))
        return;
    view_.ghostTranslationText = "";
    refresh("translation.ghost.clearMatched");
}

void LiveTranscriptTranslation::applyCommittedTranslationFailure(
    const Unit& unit, const std::string& target, const std::string& error, double startedAt,
    CommittedTranslationFailureAction action, const TranslationAttemptDiagnostics& diagnostics) {
    auto observation = observationOf(unit, target, startedAt, diagnostics);
    observation.phase = TranslationObservation::Phase::failure;
    observation.error = error;
    applyOutcome(std::move(observation), [&](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::applyFailure(unit.translationUnitID, unit.segmentIDs,
                                                unit.resultSegmentID, error, segments);
    });

    clearGhostIfCovered(unit);
    switch (action) {
    case CommittedTranslationFailureAction::surfaceWarning:
        setTranslationStatusMessage(
            localized("连续 %lld 条译文未完成，Apple 翻译可能暂不可用",
                      {std::to_string(runtime_->committedHealth.consecutiveFailedUnits)}));
        setPreparationIdle();
        break;
    case CommittedTranslationFailureAction::surfaceImmediately:
        setTranslationStatusMessage(TranslationSupport::translationFailureStatusText(error));
        setPreparationIdle();
        break;
    case CommittedTranslationFailureAction::continueSilently:
    case CommittedTranslationFailureAction::rebuildLanguagePair:
        clearTranslationPreparationStatus(std::string(TranslationSupport::defaultSourceLanguage),
                                          target);
        break;
    }
    const LiveCaptionDisplayTranslationPatch patch{
        unit.translationUnitID, unit.segmentIDs, unit.resultSegmentID, {}};
    captions_->refreshCaptionDisplay("translation.committed.failure", &patch);
    captions_->updatePersistedTranscriptIfStopped();
}

void LiveTranscriptTranslation::surfaceTranslationRecoveryFailure(const std::string& message) {
    setTranslationStatusMessage(TranslationSupport::translationFailureStatusText(message));
    setPreparationIdle();
    refresh("translation.languagePairRecovery.failed");
}

void LiveTranscriptTranslation::retryIncompleteTranslations() {
    const auto now = runtime_->settings();
    if (!TranslationPresentationBuilder::backendCanRun(now.translationBackend,
                                                       now.translationTargetLanguage)) {
        updateTranslationRetryBlockedStatus();
        return;
    }
    setTranslationStatusMessage("");
    setPreparationIdle();
    runtime_->committedHealth.reset();
    runtime_->languageResourceFailures.clear();
    captions_->changeCommittedSegments([](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::clearErrors(segments);
    });
    startCommittedRun(false);
    refresh("translation.retry");
}

void LiveTranscriptTranslation::updateTranslationRetryBlockedStatus() {
    const auto status = TranslationPresentationBuilder::retryBlockedStatus(
        TranslationPresentationBuilder::hasIncomplete(captions_->committedSegments()),
        runtime_->settings().translationBackend);
    if (!status)
        return;
    setTranslationStatusMessage(status->translationStatusMessage);
    captions_->setStatusMessage(status->statusMessage);
    refresh("translation.retryBlockedStatus");
}

} // namespace tessarune
