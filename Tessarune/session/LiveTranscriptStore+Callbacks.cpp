#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/captions/BoundarySummary.h"
#include "TessaruneCore/captions/LiveBoundaryDecisionHandler.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <algorithm>

namespace tessarune {

/// Observes the settings, so that a change from anywhere takes effect.
void LiveTranscriptStore::observeSettings() {
    AppSettings& settings = environment_.settings;
    const auto observe = [this](auto& setting, auto changed) {
        observations_.followChanges(setting.published(), changed);
    };
    observe(settings.diagnosticsLevel, [this](DiagnosticsLevel level) {
        TessaruneLog::setDiagnosticsLevel(level);
        view_.isDiagnosticsRunning = environment_.diagnostics->isRunning();
    });
    observe(settings.selectedRecognitionOptionID,
            [this](const std::string& id) { recognitionOptionChanged(id); });
    // The translation was attached first, so it has already applied a changed target or backend.
    const auto refreshOn = [this, observe](auto& setting, const char* reason) {
        observe(setting, [this, reason](const auto&) { refreshCaptionDisplay(reason); });
    };
    refreshOn(settings.translationTargetLanguage, "settings.translationTarget");
    refreshOn(settings.translationBackend, "settings.translationBackend");
    refreshOn(settings.softTranslationEnabled, "settings.softTranslation");
}

void LiveTranscriptStore::configureCoreCallbacks() {
    // A live caption changes many times a second; only the display notifies views.
    const auto count = [this](const auto&) {
        ++pipelinePerf_.coreChangeNotifications;
        ++pipelinePerf_.coreChangeObjectWillChangeSuppressed;
    };
    core_.committedSegments.onWillChange(count);
    core_.liveLeadingSentences.onWillChange(count);
    core_.softCaptionSegments.onWillChange(count);
    core_.currentPartial.onWillChange(count);
    core_.lockCount.onWillChange(count);
    core_.finalCount.onWillChange(count);
    core_.debugEvents.onWillChange(count);

    const WeakSelf weak = weak_from_this();
    core_.onCommit = [weak](const CaptionCore::Rows& rows) {
        if (const Self self = weak.lock())
            self->handleCommit(rows);
    };
    core_.onActivity = [weak](CaptionCore::Activity activity) {
        if (const Self self = weak.lock())
            self->handleActivity(activity);
    };
    core_.onBoundaryDecision = [weak](const BoundaryObservation& observation) {
        if (const Self self = weak.lock())
            self->handleBoundaryDecision(observation);
    };
    core_.onSoftCaptionChange = [weak](const SoftCaptionObservation& observation) {
        if (const Self self = weak.lock())
            self->environment_.diagnostics->recordSoftCaption(observation);
    };
    core_.onCorrection = [weak](const CorrectionObservation& observation) {
        if (const Self self = weak.lock())
            self->environment_.diagnostics->appendCorrection(observation);
    };
}

void LiveTranscriptStore::configureTranscriberCallbacks() {
    using Store = LiveTranscriptStore;
    // Makes a callback for any thread. It copies its value to the main queue, which keeps the
    // order, and calls `body` there if the store still exists.
    const auto onMain = [weak = weak_from_this(), &main = host()](auto body) {
        return [weak, &main, body](const auto& value) {
            main.post([weak, body, value] {
                if (const Self self = weak.lock())
                    body(*self, value);
            });
        };
    };
    LiveSystemAudioTranscriber& transcriber = *liveTranscriber_;
    transcriber.onRecordingStarted = onMain([](Store& self, const RecordingMetadata& metadata) {
        const AppSettings& settings = self.environment_.settings;
        self.recordingTracker_.handleStarted(metadata, *self.view_.isListening, self.core_,
                                             *settings.selectedRecognitionOptionID);
        if (self.recordingTracker_.currentID() != metadata.id)
            return;
        self.environment_.diagnostics->noteRecording(metadata);
        if (!*settings.recordLosslessAudio)
            self.environment_.compressor.follow(metadata);
    });
    transcriber.onFirstSample =
        onMain([](Store& self, const AudioSessionRecorder::FirstSample& sample) {
            self.recordingTracker_.handleFirstSample(sample.recordingID, sample.heardAt);
        });
    transcriber.onRecordingFinished = onMain([](Store& self, const RecordingMetadata& metadata) {
        self.recordingTracker_.handleFinished(metadata);
    });
    transcriber.onASREvent =
        onMain([](Store& self, const ASREvent& event) { self.handleRecognitionEvent(event); });
    transcriber.onAppleRawResult =
        onMain([](Store& self, const AppleSpeechAnalyzerRawResultRecord& record) {
            self.environment_.diagnostics->appendAppleRawResult(record);
        });
    transcriber.onAppleSummaryResult =
        onMain([](Store& self, const AppleSpeechAnalyzerSummaryRecord& record) {
            self.environment_.diagnostics->appendAppleSummaryResult(record);
        });
    transcriber.onAppleFinalReconcile =
        onMain([](Store& self, const AppleFinalReconcileDecisionRecord& record) {
            self.environment_.diagnostics->appendAppleFinalReconcile(record);
        });
    transcriber.onAudioBufferInfo = onMain([](Store& self, double sampleRate) {
        self.environment_.diagnostics->noteAudioBuffer(sampleRate);
    });
    transcriber.onLevel = onMain([](Store& self, double level) {
        self.handleAudioLevel(level);
        self.captureStatus_.handleSoundHeard();
    });
    transcriber.onError =
        onMain([](Store& self, const std::string& message) { self.showError(message); });
    transcriber.onGuessWithdrawn = [weak = weak_from_this(), &main = host()] {
        main.post([weak] {
            if (const Self self = weak.lock())
                self->handleGuessWithdrawn();
        });
    };
    transcriber.onSystemAudioSilent = [weak = weak_from_this(), &main = host()] {
        main.post([weak] {
            if (const Self self = weak.lock())
                self->captureStatus_.handleSystemAudioSilent();
        });
    };
    transcriber.onCaptureEvent =
        onMain([](Store& self, const CaptureEvent& event) { self.captureStatus_.handle(event); });
}

// Handlers of the transcriber's callbacks, on the main queue

void LiveTranscriptStore::handleRecognitionEvent(const ASREvent& event) {
    const double before = now();
    const CaptionClock::Hold hold = captionClock_.hold();
    environment_.diagnostics->appendASREvent(event, hold.time());
    const double busy = now() - before;
    pipelinePerf_.asrDiagnosticsBusySeconds += busy;
    pipelinePerf_.asrDiagnosticsMaxMS = std::max(pipelinePerf_.asrDiagnosticsMaxMS, busy * 1000);
    applyRecognition(event);
}

void LiveTranscriptStore::applyRecognition(const ASREvent& event) {
    const double before = now();
    const bool isFinal = std::holds_alternative<ASREvent::Final>(event.value);
    ++pipelinePerf_.asrEventCount;
    ++(isFinal ? pipelinePerf_.asrFinalCount : pipelinePerf_.asrPartialCount);
    // After a stop request, the last finals are still applied; partials are ignored.
    if (!*view_.isListening && !(isFinal && *view_.sessionPhase == LiveSessionPhase::stopping))
        return;
    environment_.permissions.latch(PermissionsManager::Key::speechStatus,
                                   PermissionsManager::Status::granted);
    // Speech is activity, even if it is quiet.
    inactivity_.noteActivity();
    const double ingestStart = now();
    core_.ingest(event);
    const double ingest = now() - ingestStart;
    pipelinePerf_.coreIngestBusySeconds += ingest;
    pipelinePerf_.coreIngestMaxMS = std::max(pipelinePerf_.coreIngestMaxMS, ingest * 1000);
    texts_.updateVisibleSourceTextFlag();
    texts_.updateLiveHistoryTextIfNeeded(isFinal);
    refreshCaptionDisplay(isFinal ? "asr.final" : "asr.partial");
    const double busy = now() - before;
    pipelinePerf_.asrMainBusySeconds += busy;
    pipelinePerf_.asrMainMaxMS = std::max(pipelinePerf_.asrMainMaxMS, busy * 1000);
    if (environment_.diagnostics->capturesFullDiagnostics())
        environment_.diagnostics->notePerfStats(mergedLivePerfStats());
}

void LiveTranscriptStore::handleGuessWithdrawn() {
    if (!*view_.isListening && *view_.sessionPhase != LiveSessionPhase::stopping)
        return;
    const CaptionClock::Hold hold = captionClock_.hold();
    environment_.diagnostics->markCaptions(CaptionMark::withdrawn, hold.time());
    core_.withdrawOpenText();
    texts_.updateVisibleSourceTextFlag();
    refreshCaptionDisplay("asr.withdrawn");
}

// Handlers of the core's callbacks, called within its operations

void LiveTranscriptStore::handleCommit(const CaptionCore::Rows& rows) {
    recordingTracker_.journal(core_, rows);
    environment_.translation->startCommittedRun();
}

void LiveTranscriptStore::handleActivity(CaptionCore::Activity activity) {
    captureStatus_.handleCaptionActivity();
    if (activity != CaptionCore::Activity::partialDeduped)
        view_.isTranslationVisible = false;
    texts_.updateVisibleSourceTextFlag();
    refreshCaptionDisplay("core.activity");
}

void LiveTranscriptStore::handleBoundaryDecision(const BoundaryObservation& observation) {
    view_.latestBoundarySummary = BoundarySummary::text(observation);
    environment_.diagnostics->appendBoundary(observation);
    environment_.translation->pumpGhostTranslation(observation);
    const auto reason = LiveBoundaryDecisionHandler::engineFinalizationReason(
        observation, *environment_.settings.appleAnalyzerEarlyFinalize);
    if (reason)
        liveTranscriber_->requestFinalization(*reason);
}

} // namespace tessarune
