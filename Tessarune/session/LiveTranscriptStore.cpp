#include "Tessarune/session/LiveTranscriptStore.h"

#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

namespace tessarune {

namespace {

/// The environment for a transcriber that records only while the session listens. A start that a
/// stop has overtaken therefore records nothing.
LiveSystemAudioTranscriber::Environment
transcriberEnvironment(const LiveSessionEnvironment& environment, const SessionView& view) {
    const auto mayRecord = [&environment, &view] {
        return *view.isListening && (!environment.mayRecord || environment.mayRecord());
    };
    return {environment.speech,      environment.sound,    environment.settings,
            environment.permissions, environment.recorder, mayRecord};
}

} // namespace

std::shared_ptr<LiveTranscriptStore> LiveTranscriptStore::make(LiveSessionEnvironment environment) {
    if (!environment.diagnostics)
        environment.diagnostics = std::make_shared<SessionDiagnostics>();
    if (!environment.translation)
        environment.translation = std::make_shared<SessionTranslation>();
    Self self(new LiveTranscriptStore(std::move(environment)));
    self->environment_.translation->attach(*self);
    self->environment_.diagnostics->attach(self->view_);
    self->observeSettings();
    self->configureCoreCallbacks();
    self->configureTranscriberCallbacks();
    self->recordingTracker_.onSavedAgain = self->environment_.scheduleHistoryRefinement;
    self->refreshCaptionDisplay("store.init");
    return self;
}

LiveTranscriptStore::LiveTranscriptStore(LiveSessionEnvironment environment)
    : environment_(std::move(environment)),
      captionClock_(host()),
      core_(LiveCaptionCoreFactory::make(host(), captionClock_, environment_.settings)),
      display_(host(), environment_.settings, *environment_.diagnostics,
               environment_.notifications),
      view_(display_.store(), core_, environment_.translation->view()),
      log_(host(), environment_.speech.logger, *environment_.diagnostics),
      liveTranscriber_(
          LiveSystemAudioTranscriber::make(transcriberEnvironment(environment_, view_))),
      recordingTracker_(host(), environment_.files, environment_.catalog,
                        environment_.speech.logger, environment_.leaseDataFolder),
      captureStatus_(view_, environment_.permissions, log_,
                     [this](const std::string& reason) { refreshCaptionDisplay(reason); }),
      stop_(*this),
      inactivity_(host(), log_),
      durationClock_(host()),
      texts_(host(), core_, message_, view_, pipelinePerf_) {}

LiveTranscriptStore::~LiveTranscriptStore() {
    recordingTracker_.onSavedAgain = {};
    environment_.translation->shutDown();
    liveTranscriber_->stop();
}

PerfStats LiveTranscriptStore::mergedLivePerfStats() const {
    PerfStats merged = liveTranscriber_->perfStats();
    merged.merge(liveTranscriber_->wrapperPerfStats());
    merged.merge(pipelinePerf_.stats());
    merged.merge(display_.perfStats());
    return merged;
}

void LiveTranscriptStore::refreshCaptionDisplay(const std::string& reason,
                                                const LiveCaptionDisplayTranslationPatch* patch) {
    display_.refresh(reason, view_, patch);
}

void LiveTranscriptStore::showError(const std::string& message) {
    message_.present(message, now());
    view_.presentedError = message;
    refreshCaptionDisplay("error.presentation");
}

void LiveTranscriptStore::clearCaptions() {
    texts_.clear();
    environment_.translation->cancelGhostTranslation();
    refreshCaptionDisplay("caption.clear");
}

void LiveTranscriptStore::refreshInputDevices() {
    view_.inputDevices = AudioInputDevices::inputDevices(environment_.sound);
}

Task<void> LiveTranscriptStore::secureRecording() {
    const Self self = shared_from_this();
    Task<void> sound = environment_.recorder->synchronize();
    co_await sound;
    Task<void> rows = recordingTracker_.synchronizeJournal();
    co_await rows;
}

void LiveTranscriptStore::applySessionTransition(
    const std::optional<LiveSessionTransition>& transition) {
    if (!transition)
        return;
    view_.sessionPhase = transition->phase;
    view_.isListening = transition->isListening;
    if (transition->status)
        view_.status = *transition->status;
    if (transition->audioLevel)
        view_.audioLevel = *transition->audioLevel;
    refreshCaptionDisplay("session.transition." + std::string(name(transition->phase)));
}

} // namespace tessarune
