#include "Tessarune/session/LiveTranscriptStore.h"

#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

namespace tessarune {

namespace {

LiveSystemAudioTranscriber::Environment
transcriberEnvironment(const LiveTranscriptStore::Environment& environment) {
    return {environment.speech, environment.sound, environment.settings, environment.permissions,
            environment.recorder};
}

} // namespace

std::shared_ptr<LiveTranscriptStore> LiveTranscriptStore::make(Environment environment) {
    Self self(new LiveTranscriptStore(std::move(environment)));
    self->bridgeCoreChanges();
    self->bridgeDiagnosticsSetting();
    self->configureCoreCallbacks();
    self->configureTranscriberCallbacks();
    self->refreshCaptionDisplay("store.init");
    return self;
}

LiveTranscriptStore::LiveTranscriptStore(Environment environment)
    : isListening(false),
      sessionPhase(LiveSessionPhase::idle),
      core(LiveCaptionCoreFactory::make(environment.speech.host, environment.settings)),
      statusMessage(LiveCaptionUserMessages::idleTitle()),
      isTranslationVisible(false),
      latestBoundarySummary("—"),
      selectedSource(AudioSource::systemAudio()),
      hasVisibleSourceTextFlag(false),
      sessionDuration(0.0),
      isDiagnosticsRunning(false),
      environment_(std::move(environment)),
      liveTranscriber_(LiveSystemAudioTranscriber::make(transcriberEnvironment(environment_))),
      utilityQueue_(host().serialQueue("Tessarune.LiveResourceCleanup", QueuePriority::utility)),
      recordingTracker_(environment_.catalog, logger()),
      audioInactivityAutoStop_(host()),
      durationClock_(host()) {}

LiveTranscriptStore::~LiveTranscriptStore() {
    environment_.settings.diagnosticsLevel.published().remove(diagnosticsSettingBridge_);
    environment_.translation.shutDown();
    liveTranscriber_->stop();
}

PerfStats LiveTranscriptStore::mergedLivePerfStats() const {
    PerfStats merged = liveTranscriber_->perfStats();
    merged.merge(liveTranscriber_->wrapperPerfStats());
    merged.merge(pipelinePerf_.stats());
    return merged;
}

void LiveTranscriptStore::refreshInputDevices() {
    inputDevices = AudioInputDevices::inputDevices(environment_.sound);
}

void LiveTranscriptStore::applySessionTransition(
    const std::optional<LiveSessionTransition>& transition) {
    if (!transition)
        return;
    sessionPhase = transition->phase;
    isListening = transition->isListening;
    isStarting_ = transition->isStarting;
    if (transition->statusMessage)
        statusMessage = *transition->statusMessage;
    if (transition->audioLevel)
        audioLevel = *transition->audioLevel;
    refreshCaptionDisplay("session.transition." + std::string(name(transition->phase)));
}

void LiveTranscriptStore::log(const std::string& name, const LogFields& fields,
                              Importance importance, std::source_location source) {
    logger().event(name, fields, importance, source);
}

void LiveTranscriptStore::logLifecycle(const std::string& name, const LogFields& fields,
                                       Importance importance, std::source_location source) {
    log(name, fields, importance, source);
    recordLifecycle(name, Phase::instant, fields);
}

void LiveTranscriptStore::recordLifecycle(const std::string& name, Phase phase,
                                          const LogFields& fields,
                                          std::optional<double> elapsedSeconds) {
    environment_.diagnostics.lifecycle({now(), name, phase, elapsedSeconds, fields});
}

std::int64_t LiveTranscriptStore::elapsedMS(double since) const {
    return static_cast<std::int64_t>((now() - since) * 1000.0);
}

LogFields LiveTranscriptStore::elapsed(double since) const {
    return {{"elapsedMS", elapsedMS(since)}};
}

} // namespace tessarune
