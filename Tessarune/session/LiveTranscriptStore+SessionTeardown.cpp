#include "Tessarune/session/LiveResourceCleanup.h"
#include "Tessarune/session/LiveTranscriptPersistencePresentationState.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

void LiveTranscriptStore::stopListening(const LiveSessionControlTrigger& trigger) {
    // 1. A late start can have dropped the phase while a stop goes on; there is never a second one.
    if (isFinalizing_)
        return;
    const LiveSessionPhase phaseBefore = *sessionPhase;
    const auto transition = sessionState_.requestStop(recordingTracker_.hasCurrentRecording());
    if (!transition)
        return;
    // 2.
    stopRequestedAt_ = now();
    currentStopTrigger_ = trigger;
    // 3.
    LogFields fields{{"phase", std::string(name(phaseBefore))},
                     {"hasRecording", recordingTracker_.hasCurrentRecording()}};
    fields.add(liveCounts())
        .add("pendingTranslations", environment_.translation.hasPendingTranslations())
        .add(trigger.logFields());
    environment_.diagnostics.setStopRequestFields(fields);
    logLifecycle("listen.stop.requested", fields, Importance::important);
    // 4.
    applySessionTransition(transition);
    // 5.
    audioInactivityAutoStop_.stop();
    core.cancelPendingPartial();
    durationClock_.stop();
    updateVisibleSourceTextFlag();
    // 6.
    isFinalizing_ = true;
    stopTask_ = spawn(Executor::main(host()), runStop(weak_from_this(), ++stopNumber_));
}

Task<void> LiveTranscriptStore::runStop(WeakSelf weak, std::uint64_t number) {
    const Self self = weak.lock();
    if (!self)
        co_return;
    const double requestedAt = self->stopRequestedAt_;
    // 1.
    Task<void> draining = drainEngine(self);
    co_await draining;
    // 2.
    Task<void> finalizing = finalizeStoppedSession(self);
    co_await finalizing;
    // 3. A session that was started meanwhile may have a stop of its own by now.
    self->log("listen.stop.task.done", self->elapsed(requestedAt));
    if (self->stopNumber_ == number)
        self->stopTask_.reset();
}

Task<void> LiveTranscriptStore::drainEngine(Self self) {
    const Step step = self->beginStep("listen.stop.engineDrain");
    self->log("listen.stop.engineDrain.start");
    Task<void> draining = self->liveTranscriber_->finishDrainingAndStop();
    co_await draining;
    self->log("listen.stop.engineDrain.done", self->elapsed(step.startedAt));
    self->finishStep(step);
}

Task<void> LiveTranscriptStore::finalizeStoppedSession(Self self) {
    // 1.
    const Step step = self->beginFinalize();
    // 2.
    self->sealLiveIntoCommittedForStop();
    // 3. to 5.
    Task<bool> translating = drainTranslation(self);
    const bool translationCompleted = co_await translating;
    // 6.
    Task<void> compressing = compressStoppedRecordingIfNeeded(self);
    co_await compressing;
    // 7.
    self->finishDiagnosticsForStop();
    // 8.
    const bool transcriptPersisted = self->persistForStop();
    // 9.
    self->cleanUpForStop();
    // 10. to 12.
    self->returnToIdle(transcriptPersisted);
    // 13.
    self->reportFinalized(step, transcriptPersisted, translationCompleted);
    // 14. to 16.
    self->finishFinalize();
}

LiveTranscriptStore::Step LiveTranscriptStore::beginFinalize() {
    LogFields fields = liveCounts();
    fields.add(stopTriggerFields());
    log("listen.stop.finalize.start", fields, Importance::important);
    fields.add("capturesFullDiagnostics", environment_.diagnostics.capturesFullDiagnostics());
    // A session that never came to listen has nothing worth keeping.
    if (!didReachListening_)
        discardCurrentRecording();
    return beginStep("listen.stop.finalize", fields);
}

void LiveTranscriptStore::sealLiveIntoCommittedForStop() {
    const Step step = beginStep("listen.stop.seal");
    takeMessageAway();
    const std::size_t before = core.committedSegments->size();
    const std::vector<UUID> added = core.sealLiveIntoHistory(now());
    if (!added.empty()) {
        const CaptionCore::Rows& rows = *core.committedSegments;
        for (std::size_t i = before; i < rows.size(); ++i)
            journal(rows[i]);
        environment_.translation.startCommittedRun();
    }
    updateLiveHistoryTextIfNeeded(true);
    LogFields fields = elapsed(step.startedAt);
    fields.add(committedCounts());
    log("listen.stop.seal.done", fields);
    finishStep(step);
}

Task<bool> LiveTranscriptStore::drainTranslation(Self self) {
    // 3.
    const double timeout = *self->environment_.settings.translationDrainTimeoutSeconds;
    const SessionTranslation& translation = self->environment_.translation;
    const Step step =
        self->beginStep("listen.stop.translationDrain",
                        {{"timeoutSeconds", timeout},
                         {"pendingTranslations", translation.hasPendingTranslations()}});
    Task<bool> draining = translation.drainCommittedTranslationsBeforePersist(timeout);
    const bool completed = co_await draining;
    LogFields fields = self->elapsed(step.startedAt);
    fields.add("completed", completed)
        .add("pendingTranslations", translation.hasPendingTranslations());
    self->log("listen.stop.translationDrain.done", fields);
    self->finishStep(step);
    // 4.
    if (completed) {
        self->refreshCaptionDisplay("listen.stop.translationDrain.complete");
    } else {
        translation.setPreparationIdle();
        self->setTranslationStatusMessage(localized("部分译文未完成，已保存当前可用结果"));
        self->refreshCaptionDisplay("listen.stop.translationDrain.degraded");
    }
    // 5.
    self->environment_.diagnostics.recordLiveCaptionStopSnapshot(
        "listen.stop.afterTranslationDrain", completed);
    co_return completed;
}

void LiveTranscriptStore::finishDiagnosticsForStop() {
    const Step step = beginStep("listen.stop.diagnostics");
    finishDiagnosticsSnapshot();
    log("listen.stop.diagnostics.done", elapsed(step.startedAt));
    finishStep(step);
}

void LiveTranscriptStore::finishDiagnosticsSnapshot() {
    const auto recording = recordingTracker_.currentRecordingMetadata();
    LogFields fields{{"running", environment_.diagnostics.isRunning()}};
    if (recording)
        fields.add("recordingID", recording->id.text()).add("recordingPath", recording->filePath);
    log("diagnostics.finish.request", fields);
    environment_.diagnostics.finish({exportTranscriptSnapshot(), mergedLivePerfStats(), recording});
    isDiagnosticsRunning = environment_.diagnostics.isRunning();
}

bool LiveTranscriptStore::persistForStop() {
    const Step step = beginStep("listen.stop.persist");
    const bool persisted = persistTranscript();
    log("listen.stop.persist.done", elapsed(step.startedAt));
    finishStep(step, {{"transcriptPersisted", persisted}});
    return persisted;
}

bool LiveTranscriptStore::persistTranscript() {
    // 1.
    const auto request = refinementRequest();
    // 2.
    const auto timeline = HistoryWordTimeline::build(
        recordingTracker_.currentStartedAt(), *environment_.settings.selectedRecognitionOptionID,
        *core.committedSegments, core.wordEvents());
    // 3.
    const TranscriptSnapshot snapshot = exportTranscriptSnapshot();
    // 4.
    const bool persisted =
        recordingTracker_.saveTranscripts(snapshot.sourceText, snapshot.bilingualText, timeline);
    // What could not be saved is made from the journal at the next start.
    if (journal_ && persisted)
        journal_->discard();
    journal_.reset();
    // 5.
    if (!persisted) {
        log("history.refine.schedule.skipped", {{"reason", "transcriptPersistFailed"}},
            Importance::important);
    } else if (environment_.scheduleHistoryRefinement) {
        environment_.scheduleHistoryRefinement(request);
    }
    // 6.
    return persisted;
}

std::optional<HistoryRefinementRequest> LiveTranscriptStore::refinementRequest() const {
    const AppSettings& settings = environment_.settings;
    if (!*settings.appleAnalyzerHistoryRefinement || !recordingTracker_.currentID())
        return std::nullopt;
    const auto path = recordingTracker_.currentAudioPath();
    const auto option = ModelCatalog::recognitionOption(*settings.selectedRecognitionOptionID);
    if (!path || path->empty() || !option || !environment_.files.exists(*path))
        return std::nullopt;
    return HistoryRefinementRequest{*recordingTracker_.currentID(),
                                    path->string(),
                                    option->id,
                                    option->localeIdentifier,
                                    *settings.translationBackend,
                                    *settings.translationTargetLanguage};
}

void LiveTranscriptStore::cleanUpForStop() {
    const Step step = beginStep("listen.stop.cleanup");
    bigCleanup();
    log("listen.stop.cleanup.done", elapsed(step.startedAt));
    finishStep(step);
}

void LiveTranscriptStore::bigCleanup() {
    // 1. and 2.
    environment_.translation.cancelCommittedTranslationTask();
    environment_.translation.cancelGhostTranslation();
    environment_.translation.bigCleanup();
    // 3.
    core.clearDebugEvents();
    core.resetCounters();
    // 4.
    LiveResourceCleanup::releaseIdleResources(
        {environment_.files, utilityQueue_, environment_.returnMemory});
}

void LiveTranscriptStore::returnToIdle(bool transcriptPersisted) {
    // 10.
    applySessionTransition(sessionState_.stopFinished());
    // 11.
    std::string status = *statusMessage;
    const bool failureIsShown =
        LiveTranscriptPersistencePresentationState::apply(transcriptPersisted, status);
    if (failureIsShown)
        statusMessage = status;
    // 12.
    updateVisibleSourceTextFlag();
    refreshCaptionDisplay(failureIsShown ? "listen.stop.transcriptPersist.failed"
                                         : "listen.stop.finished");
}

void LiveTranscriptStore::reportFinalized(const Step& step, bool transcriptPersisted,
                                          bool translationCompleted) {
    const bool isComplete = transcriptPersisted && translationCompleted;
    LogFields fields = elapsed(step.startedAt);
    fields.add("pendingStartAfterStop", pendingStartAfterStop_)
        .add("outcome", isComplete ? "complete" : "degraded")
        .add("transcriptPersisted", transcriptPersisted)
        .add(stopTriggerFields());
    log("listen.stop.finalize.done", fields, Importance::important);
    finishStep(step, fields);
}

void LiveTranscriptStore::finishFinalize() {
    // 14.
    environment_.diagnostics.closeLifecycle();
    const WeakSelf weak = weak_from_this();
    environment_.diagnostics.startIdleMemorySentinel(
        {environment_.diagnostics.runDirectory(), "listen.stop.finalize.done", [weak] {
             const Self self = weak.lock();
             return self ? self->liveCounts() : LogFields();
         }});
    // 15.
    currentStopTrigger_.reset();
    isFinalizing_ = false;
    // 16.
    if (std::exchange(pendingStartAfterStop_, false))
        startListening(LiveSessionControlTrigger::pendingRestart());
}

LiveTranscriptStore::Step LiveTranscriptStore::beginStep(std::string name,
                                                         const LogFields& fields) {
    recordLifecycle(name, Phase::start, fields);
    return {std::move(name), now()};
}

void LiveTranscriptStore::finishStep(const Step& step, const LogFields& fields) {
    recordLifecycle(step.name, Phase::finish, fields, now() - step.startedAt);
}

LogFields LiveTranscriptStore::stopTriggerFields() const {
    return currentStopTrigger_.value_or(LiveSessionControlTrigger::programmatic()).logFields();
}

LogFields LiveTranscriptStore::liveCounts() const {
    return {{"committedSegments", std::ssize(*core.committedSegments)},
            {"liveLeadingSentences", std::ssize(*core.liveLeadingSentences)},
            {"hasPartial", !Text::trimmed(core.currentPartial->sourceText).empty()}};
}

LogFields LiveTranscriptStore::committedCounts() const {
    return {{"committedSegments", std::ssize(*core.committedSegments)},
            {"pendingTranslations", environment_.translation.hasPendingTranslations()}};
}

} // namespace tessarune
