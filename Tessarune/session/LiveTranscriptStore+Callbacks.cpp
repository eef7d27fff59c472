#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/session/SystemAudioSilentStartPolicy.h"
#include "TessaruneCore/captions/BoundarySummary.h"
#include "TessaruneCore/captions/LiveBoundaryDecisionHandler.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

/// A live caption changes many times a second; views hear of it through the display only.
void LiveTranscriptStore::bridgeCoreChanges() {
    const auto count = [this](const auto&) {
        ++pipelinePerf_.coreChangeNotifications;
        ++pipelinePerf_.coreChangeObjectWillChangeSuppressed;
    };
    core.committedSegments.onWillChange(count);
    core.liveLeadingSentences.onWillChange(count);
    core.softCaptionSegments.onWillChange(count);
    core.currentPartial.onWillChange(count);
    core.lockCount.onWillChange(count);
    core.finalCount.onWillChange(count);
    core.debugEvents.onWillChange(count);
}

void LiveTranscriptStore::bridgeDiagnosticsSetting() {
    diagnosticsSettingBridge_ = environment_.settings.diagnosticsLevel.published().onDidChange(
        [this](DiagnosticsLevel level) {
            TessaruneLog::setDiagnosticsLevel(level);
            isDiagnosticsRunning = environment_.diagnostics.isRunning();
        });
}

void LiveTranscriptStore::configureCoreCallbacks() {
    const WeakSelf weak = weak_from_this();
    core.onCommit = [weak](const CaptionCore::Rows& rows) {
        if (const Self self = weak.lock())
            self->handleCommit(rows);
    };
    core.onActivity = [weak](CaptionCore::Activity activity) {
        if (const Self self = weak.lock())
            self->handleActivity(activity);
    };
    core.onBoundaryDecision = [weak](const BoundaryObservation& observation) {
        if (const Self self = weak.lock())
            self->handleBoundaryDecision(observation);
    };
    core.onSoftCaptionChange = [weak](const SoftCaptionObservation& observation) {
        if (const Self self = weak.lock())
            self->environment_.diagnostics.recordSoftCaption(observation);
    };
    core.onCorrection = [weak](const CorrectionObservation& observation) {
        if (const Self self = weak.lock())
            self->environment_.diagnostics.appendCorrection(observation);
    };
}

/// A callback that may come on any thread: a copy of its value goes to the main queue, and there to
/// `body` while the store lives. The main queue keeps the order.
template <typename Value, typename Body>
std::function<void(const Value&)> LiveTranscriptStore::onMain(Body body) {
    return [weak = weak_from_this(), &main = host(), body](const Value& value) {
        main.post([weak, body, value] {
            if (const Self self = weak.lock())
                body(*self, value);
        });
    };
}

void LiveTranscriptStore::configureTranscriberCallbacks() {
    using Store = LiveTranscriptStore;
    LiveSystemAudioTranscriber& transcriber = *liveTranscriber_;
    transcriber.onRecordingStarted =
        onMain<RecordingMetadata>([](Store& self, const RecordingMetadata& metadata) {
            self.handleRecordingStarted(metadata);
        });
    transcriber.onASREvent = onMain<ASREvent>(
        [](Store& self, const ASREvent& event) { self.handleRecognitionEvent(event); });
    transcriber.onAppleRawResult = onMain<AppleSpeechAnalyzerRawResultRecord>(
        [](Store& self, const AppleSpeechAnalyzerRawResultRecord& record) {
            self.environment_.diagnostics.appendAppleRawResult(record);
        });
    transcriber.onAppleSummaryResult = onMain<AppleSpeechAnalyzerSummaryRecord>(
        [](Store& self, const AppleSpeechAnalyzerSummaryRecord& record) {
            self.environment_.diagnostics.appendAppleSummaryResult(record);
        });
    transcriber.onAppleFinalReconcile = onMain<AppleFinalReconcileDecisionRecord>(
        [](Store& self, const AppleFinalReconcileDecisionRecord& record) {
            self.environment_.diagnostics.appendAppleFinalReconcile(record);
        });
    transcriber.onAudioBufferInfo = onMain<double>([](Store& self, double sampleRate) {
        self.environment_.diagnostics.noteAudioBuffer(sampleRate);
    });
    transcriber.onLevel =
        onMain<double>([](Store& self, double level) { self.handleLevelEvent(level); });
    transcriber.onError = onMain<std::string>(
        [](Store& self, const std::string& message) { self.showError(message); });
    transcriber.onGuessWithdrawn = [weak = weak_from_this(), &main = host()] {
        main.post([weak] {
            if (const Self self = weak.lock())
                self->handleGuessWithdrawn();
        });
    };
    transcriber.onSystemAudioSilent = [weak = weak_from_this(), &main = host()] {
        main.post([weak] {
            if (const Self self = weak.lock())
                self->handleSystemAudioSilent();
        });
    };
    transcriber.onCaptureEvent = onMain<CaptureEvent>(
        [](Store& self, const CaptureEvent& event) { self.handleCaptureEvent(event); });
}

// What the transcriber's callbacks do on the main queue

void LiveTranscriptStore::handleRecordingStarted(const RecordingMetadata& metadata) {
    recordingTracker_.handleStarted(metadata, *isListening);
    if (recordingTracker_.currentID() == metadata.id)
        beginJournal(metadata);
}

void LiveTranscriptStore::handleRecognitionEvent(const ASREvent& event) {
    const double before = now();
    environment_.diagnostics.appendASREvent(event);
    const double busy = now() - before;
    pipelinePerf_.asrDiagnosticsBusySeconds += busy;
    pipelinePerf_.asrDiagnosticsMaxMS = std::max(pipelinePerf_.asrDiagnosticsMaxMS, busy * 1000);
    applyRecognition(event);
}

void LiveTranscriptStore::applyRecognition(const ASREvent& event) {
    const double before = now();
    const bool isFinal = std::holds_alternative<ASREvent::Final>(event.value);
    // 1.
    ++pipelinePerf_.asrEventCount;
    ++(isFinal ? pipelinePerf_.asrFinalCount : pipelinePerf_.asrPartialCount);
    // 2. After a stop was asked for, the last finals still count; guesses do not.
    if (!*isListening && !(isFinal && *sessionPhase == LiveSessionPhase::stopping))
        return;
    // 3.
    environment_.permissions.latch(PermissionsManager::Key::speechStatus,
                                   PermissionsManager::Status::granted);
    // 4. Speech is activity, however quiet it is.
    audioInactivityAutoStop_.noteActivity();
    // 5.
    const double ingestedFrom = now();
    core.ingest(event);
    const double ingest = now() - ingestedFrom;
    pipelinePerf_.coreIngestBusySeconds += ingest;
    pipelinePerf_.coreIngestMaxMS = std::max(pipelinePerf_.coreIngestMaxMS, ingest * 1000);
    // 6.
    updateVisibleSourceTextFlag();
    // 7.
    updateLiveHistoryTextIfNeeded(isFinal);
    // 8.
    refreshCaptionDisplay(isFinal ? "asr.final" : "asr.partial");
    // 9.
    const double busy = now() - before;
    pipelinePerf_.asrMainBusySeconds += busy;
    pipelinePerf_.asrMainMaxMS = std::max(pipelinePerf_.asrMainMaxMS, busy * 1000);
    if (environment_.diagnostics.isRunning())
        environment_.diagnostics.notePerfStats(mergedLivePerfStats());
}

void LiveTranscriptStore::handleGuessWithdrawn() {
    if (!*isListening && *sessionPhase != LiveSessionPhase::stopping)
        return;
    core.withdrawOpenText();
    updateVisibleSourceTextFlag();
    refreshCaptionDisplay("asr.withdrawn");
}

void LiveTranscriptStore::handleLevelEvent(double level) {
    handleAudioLevel(level);
    environment_.permissions.latch(PermissionsManager::Key::systemAudioStatus,
                                   PermissionsManager::Status::granted);
    if (LiveCaptionUserMessages::isSilentMessage(*statusMessage))
        statusMessage = std::string();
}

void LiveTranscriptStore::handleSystemAudioSilent() {
    if (!*isListening)
        return;
    const auto message = SystemAudioSilentStartPolicy::warningMessageIfNeeded(
        environment_.permissions, *selectedSource);
    if (!message)
        return;
    statusMessage = *message;
    refreshCaptionDisplay("systemAudio.silent");
}

void LiveTranscriptStore::handleCaptureEvent(const CaptureEvent& event) {
    if (!*isListening)
        return;
    isCaptureInterrupted_ = event.kind == CaptureEvent::Kind::interrupted;
    switch (event.kind) {
    case CaptureEvent::Kind::interrupted:
        log("listen.capture.interrupted",
            {{"status", std::int64_t{event.status}}, {"error", event.text}}, Importance::important);
        statusMessage = LiveCaptionUserMessages::captureInterrupted();
        refreshCaptionDisplay("capture.interrupted");
        break;
    case CaptureEvent::Kind::resumed:
        log("listen.capture.resumed", {{"device", event.text}, {"gapSeconds", event.gapSeconds}},
            Importance::important);
        if (Text::equal(*statusMessage, LiveCaptionUserMessages::captureInterrupted()))
            statusMessage = LiveCaptionUserMessages::captureListeningTo(event.text);
        refreshCaptionDisplay("capture.resumed");
        break;
    case CaptureEvent::Kind::deviceChanged:
        log("listen.capture.deviceChanged", {{"device", event.text}}, Importance::important);
        statusMessage = LiveCaptionUserMessages::captureListeningTo(event.text);
        refreshCaptionDisplay("capture.deviceChanged");
        break;
    }
}

// What the core's callbacks do, inside its operations

void LiveTranscriptStore::handleCommit(const CaptionCore::Rows& rows) {
    for (const CaptionSegment& row : rows)
        journal(row);
    environment_.translation.startCommittedRun();
}

void LiveTranscriptStore::handleActivity(CaptionCore::Activity activity) {
    // The last words before an interruption come after the news of it, which must not go with them.
    const bool isInterrupted = isCaptureInterrupted_ && *isListening;
    statusMessage = isInterrupted ? LiveCaptionUserMessages::captureInterrupted() : std::string();
    if (activity != CaptionCore::Activity::partialDeduped)
        isTranslationVisible = false;
    updateVisibleSourceTextFlag();
    refreshCaptionDisplay("core.activity");
}

void LiveTranscriptStore::handleBoundaryDecision(const BoundaryObservation& observation) {
    latestBoundarySummary = BoundarySummary::text(observation);
    environment_.diagnostics.appendBoundary(observation);
    environment_.translation.pumpGhostTranslation(observation);
    const auto reason = LiveBoundaryDecisionHandler::engineFinalizationReason(
        observation, *environment_.settings.appleAnalyzerEarlyFinalize);
    if (reason)
        liveTranscriber_->requestFinalization(*reason);
}

} // namespace tessarune
