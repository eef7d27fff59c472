#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

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

/// Sound at least this loud counts as something that is heard.
constexpr double activeLevelThreshold = 0.01;

} // namespace

void LiveTranscriptStore::toggleListening(const LiveSessionControlTrigger& trigger) {
    if (*sessionPhase == LiveSessionPhase::stopping) {
        logLifecycle("listen.toggle.ignoredWhileStopping", trigger.logFields(),
                     Importance::important);
        return;
    }
    if (*isListening) {
        stopListening(trigger);
    } else {
        startListening(trigger);
    }
}

void LiveTranscriptStore::startListening(const LiveSessionControlTrigger& trigger) {
    // 1. A late start can have dropped the phase to idle while the stop goes on: two sessions must
    //    never share the recorder and the texts that are being saved.
    if (*sessionPhase == LiveSessionPhase::stopping || isFinalizing_) {
        const std::string event = "listen.start.ignoredWhileStopping";
        logLifecycle(event, trigger.logFields(), Importance::important);
        statusMessage = localized("正在收尾保存，请稍候…");
        refreshCaptionDisplay(event);
        return;
    }
    if (sessionState_.phase != LiveSessionPhase::idle &&
        sessionState_.phase != LiveSessionPhase::failed)
        return;
    beginSession(trigger);
}

void LiveTranscriptStore::beginSession(const LiveSessionControlTrigger& trigger) {
    // 2.
    startFailure_ = nullptr;
    didReachListening_ = false;
    applySessionTransition(sessionState_.beginStart());
    const AudioSource source = *selectedSource;
    // 3.
    environment_.diagnostics.stopIdleMemorySentinel("listen.start");
    // 4.
    startDurationTimer();
    // 5.
    resetTranscriptForNewSession();
    // 6. A later change of the setting has no effect on this session.
    sessionAudioInactivityAutoStopConfiguration_.emplace(
        *environment_.settings.audioInactivityAutoStopMinutes);
    // 7.
    startDiagnostics(source);
    // 8.
    environment_.translation.prewarmCurrentTranslationPair("listen.start");
    // 9.
    logPrepared(source, trigger);
    // 10.
    const Start start{++startNumber_, source, *environment_.settings.selectedRecognitionOptionID,
                      now(), trigger};
    LogFields fields{{"source", source.logName()}, {"optionID", start.optionID}};
    fields.add(trigger.logFields());
    logLifecycle("listen.start.task", fields, Importance::important);
    spawn(Executor::main(host()), runStart(weak_from_this(), start));
}

Task<void> LiveTranscriptStore::runStart(WeakSelf weak, Start start) {
    // 11.
    const Self self = weak.lock();
    if (!self)
        co_return;
    std::exception_ptr failure;
    try {
        Task<void> steps = startSteps(self, start);
        co_await steps;
    } catch (...) {
        failure = std::current_exception();
    }
    // Another start has taken over: what happened to this one concerns nobody.
    if (failure && !self->isSuperseded(start))
        self->failStart(start, failure);
}

Task<void> LiveTranscriptStore::startSteps(Self self, Start start) {
    const LogFields about{{"source", start.source.logName()}, {"optionID", start.optionID}};
    self->logLifecycle("listen.start.permissions.request", about);
    Task<void> asking = RecognitionPermissionGate::requestRequiredPermissions(
        self->environment_.permissions, start.source, start.optionID);
    co_await asking;
    if (self->isSuperseded(start))
        co_return;
    // 12.
    self->logLifecycle("listen.start.permissions.granted", self->elapsed(start.startedAt));
    self->applySessionTransition(self->sessionState_.permissionsGranted());
    // 13.
    const double transcriberStartedAt = self->now();
    Task<void> starting = self->liveTranscriber_->start(start.source);
    co_await starting;
    if (self->isSuperseded(start)) {
        // The newer start still waits for its permissions; the sound is this one's.
        self->liveTranscriber_->stop();
        self->discardCurrentRecording();
        co_return;
    }
    // 14.
    LogFields times = self->elapsed(transcriberStartedAt);
    times.add("totalElapsedMS", self->elapsedMS(start.startedAt));
    self->logLifecycle("listen.start.transcriber.ready", times);
    const auto transition = self->sessionState_.transcriberReady();
    self->applySessionTransition(transition);
    if (transition && transition->discardLateStartArtifacts) {
        self->discardLateStart();
        co_return;
    }
    self->didReachListening_ = true;
    self->startAudioInactivityAutoStop();
}

void LiveTranscriptStore::discardLateStart() {
    liveTranscriber_->stop();
    discardCurrentRecording();
    environment_.diagnostics.discardCurrentRun();
    isDiagnosticsRunning = environment_.diagnostics.isRunning();
}

void LiveTranscriptStore::failStart(const Start& start, const std::exception_ptr& failure) {
    // 15.
    const std::string error = localizedDescription(failure);
    LogFields fields = elapsed(start.startedAt);
    fields.add("source", start.source.logName()).add("optionID", start.optionID);
    fields.add("error", error).add(start.trigger.logFields());
    logLifecycle("listen.start.failed", fields, Importance::important);
    const auto transition = sessionState_.startFailed();
    if (transition && transition->presentStartFailure)
        startFailure_ = failure; // in its place before anybody sees the phase
    applySessionTransition(transition);
    audioInactivityAutoStop_.stop();
    if (!transition || !transition->presentStartFailure)
        return;
    durationClock_.stop();
    discardCurrentRecording();
    environment_.diagnostics.discardCurrentRun();
    isDiagnosticsRunning = environment_.diagnostics.isRunning();
    showError(error);
}

void LiveTranscriptStore::discardCurrentRecording() {
    if (journal_)
        journal_->discard();
    journal_.reset();
    recordingTracker_.discardCurrentRecordingIfAny();
}

void LiveTranscriptStore::resetTranscriptForNewSession() {
    environment_.translation.resetForNewSession();
    message_.reset();
    isCaptureInterrupted_ = false;
    core.reset(now());
    clearedSegmentIDs = std::unordered_set<UUID>();
    ghostTranslationText = std::string();
    translationStatusMessage = std::string();
    environment_.translation.setPreparationIdle();
    core.resetCounters();
    recordingTracker_.reset();
    journal_.reset();
    latestBoundarySummary = std::string("—");
    sessionAudioInactivityAutoStopConfiguration_.reset();
    pipelinePerf_ = LiveCaptionPerfCounters();
    liveHistoryText = std::string();
    liveHistoryTextLastUpdateWall_ = 0;
    updateVisibleSourceTextFlag();
    refreshCaptionDisplay("session.reset");
}

void LiveTranscriptStore::startDiagnostics(const AudioSource& source) {
    if (sessionAudioInactivityAutoStopConfiguration_) {
        environment_.diagnostics.startIfNeeded({source,
                                                AudioSourceDisplayName::name(source, *inputDevices),
                                                *sessionAudioInactivityAutoStopConfiguration_});
    }
    isDiagnosticsRunning = environment_.diagnostics.isRunning();
}

void LiveTranscriptStore::logPrepared(const AudioSource& source,
                                      const LiveSessionControlTrigger& trigger) {
    const AppSettings& settings = environment_.settings;
    const auto& autoStop = *sessionAudioInactivityAutoStopConfiguration_;
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
    logLifecycle("listen.start.prepared", fields, Importance::important);
}

void LiveTranscriptStore::startAudioInactivityAutoStop() {
    if (!sessionAudioInactivityAutoStopConfiguration_)
        sessionAudioInactivityAutoStopConfiguration_.emplace(
            *environment_.settings.audioInactivityAutoStopMinutes);
    const auto& configuration = *sessionAudioInactivityAutoStopConfiguration_;
    LogFields fields{{"configuredMinutes", configuration.minutes}};
    if (!configuration.timeoutSeconds) {
        audioInactivityAutoStop_.stop();
        logLifecycle("listen.audioInactivityAutoStop.disabled", fields);
        return;
    }
    const WeakSelf weak = weak_from_this();
    audioInactivityAutoStop_.start(
        configuration.timeoutSeconds, [weak](double idleSeconds, double timeoutSeconds) {
            if (const Self self = weak.lock())
                self->handleAudioInactivityTimeout(idleSeconds, timeoutSeconds);
        });
    fields.add("timeoutSeconds", *configuration.timeoutSeconds)
        .add("activeLevelThreshold", activeLevelThreshold);
    logLifecycle("listen.audioInactivityAutoStop.started", fields);
}

void LiveTranscriptStore::handleAudioInactivityTimeout(double idleSeconds, double timeoutSeconds) {
    if (!*isListening || *sessionPhase != LiveSessionPhase::listening)
        return;
    statusMessage = localized("%lld 分钟未检测到声音，正在自动停止…",
                              {std::to_string(static_cast<std::int64_t>(timeoutSeconds / 60))});
    refreshCaptionDisplay("audioInactivity.timeout");
    logLifecycle("listen.audioInactivityAutoStop.timeout",
                 {{"idleSeconds", idleSeconds},
                  {"timeoutSeconds", timeoutSeconds},
                  {"activeLevelThreshold", activeLevelThreshold}},
                 Importance::important);
    ++pipelinePerf_.audioInactivityAutoStops;
    stopListening(LiveSessionControlTrigger::audioInactivityTimeout(idleSeconds, timeoutSeconds));
}

void LiveTranscriptStore::handleAudioLevel(double level) {
    audioLevel = level;
    if (*isListening && *sessionPhase == LiveSessionPhase::listening &&
        level >= activeLevelThreshold)
        audioInactivityAutoStop_.noteActivity();
}

void LiveTranscriptStore::startDurationTimer() {
    durationClock_.start([weak = weak_from_this()](double seconds) {
        if (const Self self = weak.lock())
            self->sessionDuration = seconds;
    });
    sessionDuration = 0.0;
}

void LiveTranscriptStore::selectSource(const AudioSource& source) {
    if (*selectedSource == source)
        return;
    const bool wasListening = *isListening;
    selectedSource = source;
    if (!wasListening)
        return;
    stopListening(LiveSessionControlTrigger::sourceSwitch());
    pendingStartAfterStop_ = true;
}

void LiveTranscriptStore::selectRecognitionOption(const std::string& id) {
    AppSettings& settings = environment_.settings;
    if (*settings.selectedRecognitionOptionID == id)
        return;
    settings.selectedRecognitionOptionID = id;
    const auto option = ModelCatalog::recognitionOption(id);
    core.logEvent("⇄", localized("切换引擎 → ") + (option ? option->title : id));
    if (!*isListening)
        return;

    const bool hadRun = environment_.diagnostics.isRunning();
    if (hadRun)
        finishDiagnosticsSnapshot();
    core.softCaptionSegments = CaptionCore::Rows();
    core.liveLeadingSentences = CaptionCore::Rows();
    core.committedSegments = CaptionCore::Rows();
    environment_.translation.cancelGhostTranslation();
    ghostTranslationText = std::string();
    core.resetFreezeState();
    presentMessage(localized("正在切换识别模型…"));
    updateVisibleSourceTextFlag();
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
    // The next session has a run of its own.
    if (session != self->startNumber_)
        co_return;
    if (failure && !isCancellation(failure)) {
        self->showError(localizedDescription(failure));
        co_return;
    }
    if (!*self->isListening)
        co_return;
    if (hadRun)
        self->startDiagnostics(*self->selectedSource);
    self->statusMessage = std::string();
}

} // namespace tessarune
