#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune {

namespace {

bool isCancellation(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const CancellationError&) {
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

struct LiveTranscriptStore::StartRequest {
    std::uint64_t number;
    AudioSource source;
    std::string optionID;
    double startedAt;
    LiveSessionControlTrigger trigger;
};

void LiveTranscriptStore::toggleListening(const LiveSessionControlTrigger& trigger) {
    if (*view_.sessionPhase == LiveSessionPhase::stopping) {
        log_.milestone("listen.toggle.ignoredWhileStopping", trigger.logFields(),
                       Importance::important);
        return;
    }
    if (*view_.isListening) {
        stopListening(trigger);
    } else {
        startListening(trigger);
    }
}

void LiveTranscriptStore::startListening(const LiveSessionControlTrigger& trigger) {
    // The phase alone is not enough, because a start that completes during a stop resets it to
    // idle. Two sessions must never share the recorder and the texts that are being saved.
    if (*view_.sessionPhase == LiveSessionPhase::stopping || stop_.isFinalizing()) {
        const std::string event = "listen.start.ignoredWhileStopping";
        log_.milestone(event, trigger.logFields(), Importance::important);
        view_.status = SessionStatus{SessionStatus::Kind::stillSaving};
        refreshCaptionDisplay(event);
        return;
    }
    if (sessionState_.phase != LiveSessionPhase::idle &&
        sessionState_.phase != LiveSessionPhase::failed)
        return;
    view_.startFailure = nullptr;
    view_.presentedError = std::string();
    stop_.noteSessionStarting();
    view_.outcome = std::optional<SessionOutcome>();
    applySessionTransition(sessionState_.beginStart());
    const AudioSource source = *view_.selectedSource;
    environment_.diagnostics->stopIdleMemorySentinel("listen.start");
    durationClock_.start([weak = weak_from_this()](double seconds) {
        if (const Self self = weak.lock())
            self->view_.sessionDuration = seconds;
    });
    view_.sessionDuration = 0.0;
    resetTranscriptForNewSession();
    inactivity_.configure(*environment_.settings.audioInactivityAutoStopMinutes);
    startDiagnostics(source);
    environment_.translation->prewarmCurrentTranslationPair("listen.start");
    logPrepared(source, trigger);
    const StartRequest start{++startNumber_, source,
                             *environment_.settings.selectedRecognitionOptionID, now(), trigger};
    LogFields fields{{"source", source.logName()}, {"optionID", start.optionID}};
    fields.add(trigger.logFields());
    log_.milestone("listen.start.task", fields, Importance::important);
    spawn(Executor::main(host()), runStart(weak_from_this(), start));
}

Task<void> LiveTranscriptStore::runStart(WeakSelf weak, StartRequest start) {
    const Self self = weak.lock();
    if (!self)
        co_return;
    std::exception_ptr failure;
    try {
        Task<void> steps = startSession(self, start);
        co_await steps;
    } catch (...) {
        failure = std::current_exception();
    }
    // If another start has taken over, the outcome of this one is irrelevant.
    if (failure && start.number == self->startNumber_)
        self->failStart(start, failure);
}

Task<void> LiveTranscriptStore::startSession(Self self, StartRequest start) {
    const LogFields fields{{"source", start.source.logName()}, {"optionID", start.optionID}};
    self->log_.milestone("listen.start.permissions.request", fields);
    Task<void> asking = RecognitionPermissionGate::requestRequiredPermissions(
        self->environment_.permissions, start.source, start.optionID);
    co_await asking;
    if (start.number != self->startNumber_)
        co_return;
    self->log_.milestone("listen.start.permissions.granted", self->log_.elapsed(start.startedAt));
    self->applySessionTransition(self->sessionState_.permissionsGranted());
    const double transcriberStartedAt = self->now();
    Task<void> starting = self->liveTranscriber_->start(start.source);
    co_await starting;
    if (start.number != self->startNumber_) {
        // The newer start is still waiting for permissions, so the sound and the recording belong
        // to this start.
        self->liveTranscriber_->stop();
        self->discardRecording();
        co_return;
    }
    LogFields times = self->log_.elapsed(transcriberStartedAt);
    times.add("totalElapsedMS", self->log_.elapsedMS(start.startedAt));
    self->log_.milestone("listen.start.transcriber.ready", times);
    const auto transition = self->sessionState_.transcriberReady();
    self->applySessionTransition(transition);
    if (transition && transition->discardLateStartArtifacts) {
        self->liveTranscriber_->stop();
        self->discardRecording();
        self->environment_.diagnostics->discardCurrentRun();
        self->view_.isDiagnosticsRunning = self->environment_.diagnostics->isRunning();
        co_return;
    }
    self->stop_.noteSessionListening();
    self->inactivity_.start([weak = self->weak_from_this()](double idle, double timeout) {
        if (const Self alive = weak.lock())
            alive->handleAudioInactivityTimeout(idle, timeout);
    });
}

void LiveTranscriptStore::failStart(const StartRequest& start, const std::exception_ptr& failure) {
    const std::string error = localizedDescription(failure);
    LogFields fields = log_.elapsed(start.startedAt);
    fields.add("source", start.source.logName()).add("optionID", start.optionID);
    fields.add("error", error).add(start.trigger.logFields());
    log_.milestone("listen.start.failed", fields, Importance::important);
    const auto transition = sessionState_.startFailed();
    if (transition && transition->presentStartFailure)
        view_.startFailure = failure;
    applySessionTransition(transition);
    inactivity_.stop();
    if (!transition || !transition->presentStartFailure)
        return;
    durationClock_.stop();
    discardRecording();
    environment_.diagnostics->discardCurrentRun();
    view_.isDiagnosticsRunning = environment_.diagnostics->isRunning();
    showError(error);
}

void LiveTranscriptStore::discardRecording() {
    environment_.compressor.forget();
    recordingTracker_.discardCurrentRecordingIfAny();
    environment_.diagnostics->noteRecording(std::nullopt);
}

void LiveTranscriptStore::resetTranscriptForNewSession() {
    environment_.translation->resetForNewSession();
    message_.forget();
    captureStatus_.reset();
    core_.reset(now());
    core_.resetCounters();
    recordingTracker_.reset();
    view_.latestBoundarySummary = std::string("—");
    inactivity_.reset();
    view_.isTranslationOver = false;
    pipelinePerf_ = LiveCaptionPerfCounters();
    display_.resetPerfCounters();
    texts_.beginSession();
    refreshCaptionDisplay("session.reset");
}

void LiveTranscriptStore::startDiagnostics(const AudioSource& source) {
    if (inactivity_.configuration()) {
        environment_.diagnostics->startIfNeeded(
            {source, AudioSourceDisplayName::name(source, *view_.inputDevices),
             *inactivity_.configuration(),
             message_.isShown() ? std::string() : core_.currentPartial->sourceText});
    }
    view_.isDiagnosticsRunning = environment_.diagnostics->isRunning();
}

void LiveTranscriptStore::finishDiagnosticsSnapshot() {
    SessionDiagnostics& diagnostics = *environment_.diagnostics;
    const CaptionClock::Hold hold = captionClock_.hold();
    diagnostics.markCaptions(CaptionMark::ended, hold.time());
    const auto recording = recordingTracker_.currentRecordingMetadata();
    LogFields fields{{"running", diagnostics.isRunning()}};
    if (recording)
        fields.add("recordingID", recording->id.text()).add("recordingPath", recording->filePath);
    log_.event("diagnostics.finish.request", fields);
    const auto& id = recordingTracker_.currentID();
    if (id && environment_.catalog.wasDeleted(*id)) {
        diagnostics.discardCurrentRun(); // the run of a deleted recording contains its words
    } else {
        diagnostics.finish({texts_.runTexts(), mergedLivePerfStats(), recording});
    }
    view_.isDiagnosticsRunning = diagnostics.isRunning();
}

void LiveTranscriptStore::logPrepared(const AudioSource& source,
                                      const LiveSessionControlTrigger& trigger) {
    const AppSettings& settings = environment_.settings;
    const auto& autoStop = *inactivity_.configuration();
    const auto mode = *settings.sessionDiagnosticsEnabled ? *settings.appleAnalyzerDiagnosticsMode
                                                          : AppleAnalyzerDiagnosticsMode::off;
    LogFields fields{{"source", source.logName()},
                     {"optionID", *settings.selectedRecognitionOptionID},
                     {"translationBackend", *settings.translationBackend},
                     {"translationTarget", *settings.translationTargetLanguage},
                     {"diagnosticsLevel", std::string(storageName(*settings.diagnosticsLevel))},
                     {"diagnosticsEnabled", *settings.sessionDiagnosticsEnabled},
                     {"appleDiagnosticsMode", std::string(name(mode))},
                     {"softCaptionEnabled", *settings.softCaptionEnabled},
                     {"softCaptionStableSeconds", *settings.softCaptionStableSeconds},
                     {"recordWhileCaptioning", *settings.recordWhileCaptioning},
                     {"recordLosslessAudio", *settings.recordLosslessAudio},
                     {"audioInactivityAutoStopMinutes", autoStop.minutes},
                     {"audioInactivityAutoStopSeconds", autoStop.timeoutSeconds.value_or(0)}};
    fields.add(trigger.logFields());
    log_.milestone("listen.start.prepared", fields, Importance::important);
}

void LiveTranscriptStore::handleAudioInactivityTimeout(double idleSeconds, double timeoutSeconds) {
    if (!*view_.isListening || *view_.sessionPhase != LiveSessionPhase::listening)
        return;
    view_.status = SessionStatus{
        SessionStatus::Kind::inactive, {}, static_cast<std::int64_t>(timeoutSeconds / 60)};
    refreshCaptionDisplay("audioInactivity.timeout");
    log_.milestone("listen.audioInactivityAutoStop.timeout",
                   {{"idleSeconds", idleSeconds},
                    {"timeoutSeconds", timeoutSeconds},
                    {"activeLevelThreshold", SessionInactivityStop::activeLevelThreshold}},
                   Importance::important);
    ++pipelinePerf_.audioInactivityAutoStops;
    stopListening(LiveSessionControlTrigger::audioInactivityTimeout(idleSeconds, timeoutSeconds));
}

void LiveTranscriptStore::handleAudioLevel(double level) {
    view_.audioLevel = level;
    if (*view_.isListening && *view_.sessionPhase == LiveSessionPhase::listening)
        inactivity_.noteLevel(level);
}

void LiveTranscriptStore::selectSource(const AudioSource& source) {
    if (*view_.selectedSource == source)
        return;
    const bool wasListening = *view_.isListening;
    view_.selectedSource = source;
    if (!wasListening)
        return;
    stopListening(LiveSessionControlTrigger::sourceSwitch());
    stop_.startAgainAfterwards();
}

void LiveTranscriptStore::selectRecognitionOption(const std::string& id) {
    if (*environment_.settings.selectedRecognitionOptionID != id)
        environment_.settings.selectedRecognitionOptionID = id;
}

void LiveTranscriptStore::recognitionOptionChanged(const std::string& id) {
    const auto option = ModelCatalog::recognitionOption(id);
    core_.logEvent("⇄", localized("切换引擎 → ") + (option ? option->title : id));
    if (!*view_.isListening)
        return;

    const bool hadRun = environment_.diagnostics->isRunning();
    if (hadRun)
        finishDiagnosticsSnapshot();
    texts_.keepSaid();
    core_.cancelPendingPartial(); // a guess of the former recogniser would replace the message
    core_.softCaptionSegments = CaptionCore::Rows();
    core_.liveLeadingSentences = CaptionCore::Rows();
    core_.committedSegments = CaptionCore::Rows();
    environment_.translation->cancelGhostTranslation();
    core_.resetFreezeState();
    message_.present(localized("正在切换识别模型…"), now());
    texts_.updateVisibleSourceTextFlag();
    refreshCaptionDisplay("recognition.optionSwitch");
    spawn(Executor::main(host()), runSwap(weak_from_this(), startNumber_, hadRun));
}

Task<void> LiveTranscriptStore::runSwap(WeakSelf weak, std::uint64_t session, bool hadRun) {
    const Self self = weak.lock();
    if (!self)
        co_return;
    std::exception_ptr failure;
    try {
        Task<void> swapping = self->liveTranscriber_->swapEngine();
        co_await swapping;
    } catch (...) {
        failure = std::current_exception();
    }
    // A newer session has its own diagnostics run.
    if (session != self->startNumber_)
        co_return;
    // The session continues even without a recogniser, and so do its diagnostics.
    if (hadRun && *self->view_.isListening) {
        self->startDiagnostics(*self->view_.selectedSource);
        self->environment_.diagnostics->noteRecording(self->recordingTracker_.currentAtStart());
        self->environment_.diagnostics->noteAudioBuffer(self->liveTranscriber_->sampleRate());
    }
    if (failure && !isCancellation(failure)) {
        self->showError(localizedDescription(failure));
        co_return;
    }
    if (!*self->view_.isListening)
        co_return;
    self->view_.status = SessionStatus();
    self->refreshCaptionDisplay("recognition.optionSwitched");
}

} // namespace tessarune
