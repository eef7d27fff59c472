#include "Tessarune/session/LiveSessionStop.h"

#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/session/LiveResourceCleanup.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <system_error>

namespace tessarune {

LiveSessionStop::LiveSessionStop(LiveTranscriptStore& store)
    : store_(store),
      utilityQueue_(
          store.host().serialQueue("Tessarune.LiveResourceCleanup", QueuePriority::utility)) {}

LiveSessionStop::~LiveSessionStop() = default;

SessionLog& LiveSessionStop::log() const {
    return store_.log_;
}

void LiveSessionStop::request(const LiveSessionControlTrigger& trigger) {
    // The phase alone cannot prevent a second stop, because a start that completes during a stop
    // resets the phase.
    if (isFinalizing_) {
        store_.view_.startsAgain = false;
        return;
    }
    const LiveSessionPhase phaseBefore = *store_.view_.sessionPhase;
    const bool hasRecording = store_.recordingTracker_.hasCurrentRecording();
    const auto transition = store_.sessionState_.requestStop(hasRecording);
    if (!transition)
        return;
    requestedAt_ = store_.now();
    trigger_ = trigger;
    LogFields fields{{"phase", std::string(name(phaseBefore))}, {"hasRecording", hasRecording}};
    fields.add(liveCounts())
        .add("pendingTranslations", store_.environment_.translation->hasPendingTranslations())
        .add(trigger.logFields());
    log().milestone("listen.stop.requested", fields, Importance::important);
    store_.applySessionTransition(transition);
    store_.inactivity_.stop();
    const CaptionClock::Hold hold = store_.captionClock_.hold();
    store_.environment_.diagnostics->markCaptions(CaptionMark::stopped, hold.time());
    store_.core_.cancelPendingPartial();
    store_.durationClock_.stop();
    store_.texts_.updateVisibleSourceTextFlag();
    isFinalizing_ = true;
    task_ = spawn(Executor::main(store_.host()), run(store_.weak_from_this(), ++number_));
}

void LiveSessionStop::startAgainAfterwards() {
    store_.view_.startsAgain = true;
}

Task<void> LiveSessionStop::run(std::weak_ptr<LiveTranscriptStore> weak, std::uint64_t number) {
    const Store store = weak.lock();
    if (!store)
        co_return;
    LiveSessionStop& stop = store->stop_;
    const double requestedAt = stop.requestedAt_;
    Task<void> draining = stop.drainEngine(store);
    co_await draining;
    Task<void> finalizing = stop.finalize(store);
    co_await finalizing;
    stop.log().event("listen.stop.task.done", stop.log().elapsed(requestedAt));
    // If another session has started in the meantime, its own stop may already be running.
    if (stop.number_ == number)
        stop.task_.reset();
}

Task<void> LiveSessionStop::drainEngine(Store store) {
    const Step step = log().begin("listen.stop.engineDrain");
    log().event("listen.stop.engineDrain.start");
    Task<void> draining = store->liveTranscriber_->finishDrainingAndStop();
    co_await draining;
    log().event("listen.stop.engineDrain.done", log().elapsed(step.startedAt));
    log().finish(step);
}

Task<void> LiveSessionStop::finalize(Store store) {
    const Step step = beginFinalize();
    sealLiveIntoCommitted();
    discardEmptyRecording();
    Task<bool> translating = drainTranslation(store);
    const bool translationCompleted = co_await translating;
    Task<void> compressing = compressRecordingIfNeeded(store);
    co_await compressing;
    store->environment_.compressor.forget(); // whatever the outcome
    finishDiagnostics();
    const bool transcriptPersisted = persist();
    cleanUp();
    returnToIdle(transcriptPersisted, translationCompleted);
    report(step, transcriptPersisted, translationCompleted);
    finishFinalize();
}

LiveSessionStop::Step LiveSessionStop::beginFinalize() {
    LogFields fields = liveCounts();
    fields.add(triggerFields());
    log().event("listen.stop.finalize.start", fields, Importance::important);
    fields.add("capturesFullDiagnostics",
               store_.environment_.diagnostics->capturesFullDiagnostics());
    if (!isWorthKeeping_)
        store_.discardRecording();
    return log().begin("listen.stop.finalize", fields);
}

std::vector<UUID> LiveSessionStop::sealLiveRows() {
    const CaptionClock::Hold hold = store_.captionClock_.hold();
    store_.environment_.diagnostics->markCaptions(CaptionMark::sealed, hold.time());
    return store_.core_.sealLiveIntoHistory(hold.time());
}

void LiveSessionStop::sealLiveIntoCommitted() {
    const Step step = log().begin("listen.stop.seal");
    store_.message_.remove();
    const std::size_t before = store_.core_.committedSegments->size();
    const std::vector<UUID> added = sealLiveRows();
    if (!added.empty()) {
        const CaptionCore::Rows& rows = *store_.core_.committedSegments;
        store_.recordingTracker_.journal(store_.core_, std::span(rows).subspan(before));
        store_.environment_.translation->startCommittedRun();
    }
    store_.texts_.updateLiveHistoryTextIfNeeded(true);
    store_.refreshCaptionDisplay("listen.stop.seal");
    LogFields fields = log().elapsed(step.startedAt);
    fields.add("committedSegments", std::ssize(*store_.core_.committedSegments))
        .add("pendingTranslations", store_.environment_.translation->hasPendingTranslations());
    log().event("listen.stop.seal.done", fields);
    log().finish(step);
}

/// Whether the session has a recording, but neither sound nor text. Also checks the file, because
/// the duration in the catalog is also 0 if the update of the catalog failed. False if full
/// diagnostics are captured, because they need the recording.
bool LiveSessionStop::heardNothing() const {
    const auto recording = store_.recordingTracker_.currentRecordingMetadata();
    if (!recording || recording->duration > 0 || !store_.core_.committedSegments->empty() ||
        store_.environment_.diagnostics->capturesFullDiagnostics())
        return false;
    try {
        FileSystem& files = store_.environment_.files;
        return !files.exists(recording->filePath) ||
               files.size(recording->filePath) <= WAVHeader::size;
    } catch (const std::system_error&) {
        return false;
    }
}

void LiveSessionStop::discardEmptyRecording() {
    wasEmpty_ = heardNothing();
    if (wasEmpty_)
        store_.discardRecording();
}

Task<bool> LiveSessionStop::drainTranslation(Store store) {
    const double timeout = *store->environment_.settings.translationDrainTimeoutSeconds;
    SessionTranslation& translation = *store->environment_.translation;
    const Step step = log().begin("listen.stop.translationDrain",
                                  {{"timeoutSeconds", timeout},
                                   {"pendingTranslations", translation.hasPendingTranslations()}});
    Task<bool> draining = translation.drainCommittedTranslationsBeforePersist(timeout);
    const bool completed = co_await draining;
    LogFields fields = log().elapsed(step.startedAt);
    fields.add("completed", completed)
        .add("pendingTranslations", translation.hasPendingTranslations());
    log().event("listen.stop.translationDrain.done", fields);
    log().finish(step);
    store->view_.isTranslationOver = true;
    if (completed) {
        store->refreshCaptionDisplay("listen.stop.translationDrain.complete");
    } else {
        translation.setPreparationIdle();
        translation.setTranslationStatusMessage(localized("部分译文未完成，已保存当前可用结果"));
        store->refreshCaptionDisplay("listen.stop.translationDrain.degraded");
    }
    store->environment_.diagnostics->recordLiveCaptionStopSnapshot(
        {"listen.stop.afterTranslationDrain", completed, translation.isCommittedTranslating()});
    co_return completed;
}

void LiveSessionStop::finishDiagnostics() {
    const Step step = log().begin("listen.stop.diagnostics");
    store_.finishDiagnosticsSnapshot();
    log().event("listen.stop.diagnostics.done", log().elapsed(step.startedAt));
    log().finish(step);
}

bool LiveSessionStop::persist() {
    const Step step = log().begin("listen.stop.persist");
    const bool persisted = persistTranscript();
    log().event("listen.stop.persist.done", log().elapsed(step.startedAt));
    log().finish(step, {{"transcriptPersisted", persisted}});
    return persisted;
}

bool LiveSessionStop::persistTranscript() {
    const auto request = refinementRequest();
    LiveRecordingTracker& recording = store_.recordingTracker_;
    auto timeline = store_.texts_.savedTimeline(
        recording.currentStartedAt(), *store_.environment_.settings.selectedRecognitionOptionID);
    if (timeline && recording.currentDuration() > 0)
        timeline = timeline->endingBy(recording.currentDuration());
    const TranscriptSnapshot texts = store_.texts_.savedTexts();
    store_.texts_.noteSaved();
    const bool persisted =
        recording.saveTranscripts(texts.sourceText, texts.bilingualText, timeline, request);
    if (!persisted) {
        log().event("history.refine.schedule.skipped", {{"reason", "transcriptPersistFailed"}},
                    Importance::important);
    } else if (store_.environment_.scheduleHistoryRefinement) {
        store_.environment_.scheduleHistoryRefinement(request);
    }
    return persisted;
}

std::optional<HistoryRefinementRequest> LiveSessionStop::refinementRequest() const {
    const AppSettings& settings = store_.environment_.settings;
    const LiveRecordingTracker& recording = store_.recordingTracker_;
    if (!*settings.appleAnalyzerHistoryRefinement || !recording.currentID())
        return std::nullopt;
    const auto path = recording.currentAudioPath();
    if (!path || path->empty() || !store_.environment_.files.exists(*path))
        return std::nullopt;
    return HistoryRefinementRequest::current(settings, *recording.currentID(), path->string());
}

void LiveSessionStop::cleanUp() {
    const Step step = log().begin("listen.stop.cleanup");
    bigCleanup();
    log().event("listen.stop.cleanup.done", log().elapsed(step.startedAt));
    log().finish(step);
}

void LiveSessionStop::bigCleanup() {
    SessionTranslation& translation = *store_.environment_.translation;
    translation.cancelCommittedTranslationTask();
    translation.cancelGhostTranslation();
    translation.bigCleanup();
    translation.setPreparationIdle();
    store_.core_.clearDebugEvents();
    store_.core_.resetCounters();
    const LiveSessionEnvironment& environment = store_.environment_;
    LiveResourceCleanup::releaseIdleResources(
        {environment.files, utilityQueue_, environment.returnMemory});
}

void LiveSessionStop::returnToIdle(bool transcriptPersisted, bool translationCompleted) {
    store_.view_.outcome = SessionOutcome{store_.recordingTracker_.lastSavedID(),
                                          transcriptPersisted, translationCompleted, wasEmpty_};
    store_.applySessionTransition(store_.sessionState_.stopFinished());
    if (!transcriptPersisted)
        store_.view_.status = SessionStatus{SessionStatus::Kind::transcriptNotSaved};
    store_.texts_.updateVisibleSourceTextFlag();
    store_.refreshCaptionDisplay(transcriptPersisted ? "listen.stop.finished"
                                                     : "listen.stop.transcriptPersist.failed");
}

void LiveSessionStop::report(const Step& step, bool transcriptPersisted,
                             bool translationCompleted) {
    const bool isComplete = transcriptPersisted && translationCompleted;
    LogFields fields = log().elapsed(step.startedAt);
    fields.add("pendingStartAfterStop", *store_.view_.startsAgain)
        .add("outcome", isComplete ? "complete" : "degraded")
        .add("transcriptPersisted", transcriptPersisted)
        .add(triggerFields());
    log().event("listen.stop.finalize.done", fields, Importance::important);
    log().finish(step, fields);
}

void LiveSessionStop::finishFinalize() {
    SessionDiagnostics& diagnostics = *store_.environment_.diagnostics;
    diagnostics.closeLifecycle();
    diagnostics.startIdleMemorySentinel(
        {"listen.stop.finalize.done", [weak = store_.weak_from_this()] {
             const Store store = weak.lock();
             return store ? store->stop_.liveCounts() : LogFields();
         }});
    trigger_.reset();
    isFinalizing_ = false;
    if (!*store_.view_.startsAgain)
        return;
    store_.startListening(LiveSessionControlTrigger::pendingRestart());
    store_.view_.startsAgain = false; // reset last, so that views never see an idle program
}

LogFields LiveSessionStop::triggerFields() const {
    return trigger_.value_or(LiveSessionControlTrigger::programmatic()).logFields();
}

LogFields LiveSessionStop::liveCounts() const {
    const CaptionCore& core = store_.core_;
    return {{"committedSegments", std::ssize(*core.committedSegments)},
            {"liveLeadingSentences", std::ssize(*core.liveLeadingSentences)},
            {"hasPartial", !Text::trimmed(core.currentPartial->sourceText).empty()}};
}

} // namespace tessarune
