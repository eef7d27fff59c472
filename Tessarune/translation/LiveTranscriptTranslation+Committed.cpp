#include "Tessarune/translation/CommittedTranslationQueueRunner.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>
#include <unordered_set>

namespace tessarune {

namespace {

/// Whether a row failed only because the language's files were not there.
bool isLanguageResourceFailure(const std::string& error) {
    return TranslationSupport::isLanguageResourceNotReadyDisplayMessage(error) ||
           Text::hasPrefix(error, localized("Apple 翻译语言资源暂未准备好:")) ||
           Text::hasPrefix(error, localized("Apple 翻译语言资源未安装:"));
}

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

void LiveTranscriptTranslation::startCommittedRun() {
    cancelGhostTranslationTask();
    if (const auto context = prepareCommittedTranslationRunContext())
        startCommittedTranslationTask(*context, false);
}

std::optional<TranslationRunContext>
LiveTranscriptTranslation::prepareCommittedTranslationRunContext() {
    const auto result = CommittedTranslationRunPreparer::prepare(*runtime_);
    if (const auto* blocked = std::get_if<CommittedTranslationRunPreparer::Blocked>(&result))
        publishBlocked(*blocked);
    const auto* context = std::get_if<TranslationRunContext>(&result);
    if (!context)
        return std::nullopt;
    if (!context->passThrough)
        prewarmCurrentTranslationPair("translation.prepare");
    return *context;
}

void LiveTranscriptTranslation::publishBlocked(
    const CommittedTranslationRunPreparer::Blocked& blocked) {
    setPreparationIdle();
    translationStatusMessage_ = blocked.translationStatusMessage;
    access_.setStatusMessage(blocked.statusMessage);
    refresh("translation.prepare.blocked");
}

void LiveTranscriptTranslation::startCommittedTranslationTask(const TranslationRunContext& context,
                                                              bool forceTail) {
    const Self self = shared_from_this();
    CommittedTranslationQueue queue;
    queue.shouldContinue = [self] {
        return !TranslationSupport::isDisabledBackend(
            self->runtime_->settings().translationBackend);
    };
    queue.nextPendingUnit = [self, forceTail] {
        return CommittedTranslationUnitPlanner::nextPendingUnit(
            self->access_.committedSegments(), forceTail,
            [&self] { return self->runtime_->newID(); });
    };
    queue.process = [self, context](Unit unit, std::stop_token stop) {
        return self->processCommittedTranslationUnit(std::move(unit), context, std::move(stop));
    };
    CommittedTranslationTaskCoordinator::start(*runtime_, std::move(queue));
}

void LiveTranscriptTranslation::cancelCommittedTranslationTask() {
    runtime_->cancelCommittedTask();
    refresh("translation.committed.cancelled");
}

Task<bool> LiveTranscriptTranslation::processCommittedTranslationUnit(Unit unit,
                                                                      TranslationRunContext context,
                                                                      std::stop_token stop) {
    const Self self = shared_from_this();
    using Diagnostics = TranslationAttemptDiagnostics;
    CommittedTranslationUnitProcessor::Handlers handlers;
    handlers.recordStart = [self](const Unit& started, const std::string& target, double startedAt,
                                  const Diagnostics& diagnostics) {
        self->recordCommittedTranslationStart(started, target, startedAt, diagnostics);
    };
    handlers.applySuccess = [self](const Unit& done, const std::string& target,
                                   const std::string& translatedText, double startedAt,
                                   const Diagnostics& diagnostics) {
        self->applyCommittedTranslationSuccess(done, target, translatedText, startedAt,
                                               diagnostics);
    };
    handlers.applyFailure = [self](const Unit& failed, const std::string& target,
                                   const std::string& error, double startedAt,
                                   CommittedTranslationFailureAction action,
                                   const Diagnostics& diagnostics) {
        self->applyCommittedTranslationFailure(failed, target, error, startedAt, action,
                                               diagnostics);
    };
    handlers.reportLanguagePreparation = [self](const std::string& source,
                                                const std::string& target) {
        self->setTranslationPreparationStatus(source, target);
        self->refresh("translation.languagePreparation.waiting");
    };
    handlers.reportRecoveryFailure = [self](const std::string& message) {
        self->surfaceTranslationRecoveryFailure(message);
    };
    return CommittedTranslationUnitProcessor::process(std::move(unit), std::move(context), runtime_,
                                                      std::move(handlers), std::move(stop));
}

void LiveTranscriptTranslation::recordCommittedTranslationStart(
    const Unit& unit, const std::string& target, double startedAt,
    const TranslationAttemptDiagnostics& diagnostics) {
    access_.appendTranslationObservation(observationOf(unit, target, startedAt, diagnostics));
}

void LiveTranscriptTranslation::applyCommittedTranslationSuccess(
    const Unit& unit, const std::string& target, const std::string& translatedText,
    double startedAt, TranslationAttemptDiagnostics diagnostics) {
    const double before = runtime_->now();
    access_.changeCommittedSegments([&](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::applySuccess(unit.translationUnitID, unit.segmentIDs,
                                                unit.resultSegmentID, translatedText, segments);
    });
    diagnostics.applySeconds = runtime_->now() - before;
    auto observation = observationOf(unit, target, startedAt, diagnostics);
    observation.t = runtime_->now();
    observation.phase = TranslationObservation::Phase::success;
    observation.translatedText = translatedText;
    observation.durationSeconds = observation.t - startedAt;
    access_.appendTranslationObservation(observation);

    if (runtime_->hasCommittedLanguageResourceFailures)
        clearLanguageResourceFailures();
    clearGhostIfCovered(unit);
    setPreparationIdle();
    translationStatusMessage_ = "";
    const LiveCaptionDisplayTranslationPatch patch{unit.translationUnitID, unit.segmentIDs,
                                                   unit.resultSegmentID, translatedText};
    access_.refreshCaptionDisplay("translation.committed.success", &patch);
    access_.updatePersistedTranscriptIfStopped();
}

void LiveTranscriptTranslation::clearLanguageResourceFailures() {
    // One success proves that the files are there: what failed for want of them waits again.
    std::unordered_set<UUID> resolved;
    bool cleared = false;
    access_.changeCommittedSegments([&](std::span<CaptionSegment> segments) {
        cleared = TranslationSegmentMutator::clearErrors(
            segments, isLanguageResourceFailure, [&](const CaptionSegment& segment) {
                if (segment.translationUnitID)
                    resolved.insert(*segment.translationUnitID);
            });
    });
    runtime_->committedHealth.resolveFailures(resolved);
    if (cleared)
        runtime_->hasCommittedLanguageResourceFailures = false;
}

void LiveTranscriptTranslation::clearGhostIfCovered(const Unit& unit) {
    if (!runtime_->clearGhostSourceIfMatches(unit.sourceText))
        return;
    ghostTranslationText_ = "";
    refresh("translation.ghost.clearMatched");
}

void LiveTranscriptTranslation::applyCommittedTranslationFailure(
    const Unit& unit, const std::string& target, const std::string& error, double startedAt,
    CommittedTranslationFailureAction action, TranslationAttemptDiagnostics diagnostics) {
    const double before = runtime_->now();
    access_.changeCommittedSegments([&](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::applyFailure(unit.translationUnitID, unit.segmentIDs,
                                                unit.resultSegmentID, error, segments);
    });
    diagnostics.applySeconds = runtime_->now() - before;
    auto observation = observationOf(unit, target, startedAt, diagnostics);
    observation.t = runtime_->now();
    observation.phase = TranslationObservation::Phase::failure;
    observation.error = error;
    observation.durationSeconds = observation.t - startedAt;
    access_.appendTranslationObservation(observation);

    clearGhostIfCovered(unit);
    switch (action) {
    case CommittedTranslationFailureAction::surfaceWarning:
        translationStatusMessage_ =
            localized("连续 %lld 条译文未完成，Apple 翻译可能暂不可用",
                      {std::to_string(runtime_->committedHealth.consecutiveFailedUnits)});
        setPreparationIdle();
        break;
    case CommittedTranslationFailureAction::surfaceImmediately:
        translationStatusMessage_ = TranslationSupport::translationFailureStatusText(error);
        setPreparationIdle();
        break;
    case CommittedTranslationFailureAction::continueSilently:
    case CommittedTranslationFailureAction::rebuildLanguagePair:
        clearTranslationPreparationStatus(std::string(TranslationSupport::defaultSourceLanguage),
                                          target);
        break;
    }
    refresh("translation.committed.failure");
    access_.updatePersistedTranscriptIfStopped();
}

void LiveTranscriptTranslation::surfaceTranslationRecoveryFailure(const std::string& message) {
    translationStatusMessage_ = TranslationSupport::translationFailureStatusText(message);
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
    translationStatusMessage_ = "";
    setPreparationIdle();
    runtime_->committedHealth.reset();
    runtime_->hasCommittedLanguageResourceFailures = false;
    access_.changeCommittedSegments([](std::span<CaptionSegment> segments) {
        TranslationSegmentMutator::clearErrors(segments);
    });
    startCommittedRun();
    refresh("translation.retry");
}

void LiveTranscriptTranslation::updateTranslationRetryBlockedStatus() {
    const auto status = TranslationPresentationBuilder::retryBlockedStatus(
        TranslationPresentationBuilder::hasIncomplete(access_.committedSegments()),
        runtime_->settings().translationBackend);
    if (!status)
        return;
    translationStatusMessage_ = status->translationStatusMessage;
    access_.setStatusMessage(status->statusMessage);
    refresh("translation.retryBlockedStatus");
}

} // namespace tessarune
