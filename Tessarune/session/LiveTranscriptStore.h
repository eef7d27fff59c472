#pragma once

#include "Tessarune/session/CaptionClock.h"
#include "Tessarune/session/CaptureStatus.h"
#include "Tessarune/session/LiveCaptionDisplay.h"
#include "Tessarune/session/LiveCaptionMessage.h"
#include "Tessarune/session/LiveCaptionPerfCounters.h"
#include "Tessarune/session/LiveRecordingTracker.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/LiveSessionEnvironment.h"
#include "Tessarune/session/LiveSessionStop.h"
#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "Tessarune/session/SessionDurationClock.h"
#include "Tessarune/session/SessionInactivityStop.h"
#include "Tessarune/session/SessionLog.h"
#include "Tessarune/session/SessionTexts.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/observation/Observations.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tessarune {

/// Owns a listening session: starts and stops the sound, feeds the captions, tracks the recording,
/// and saves everything at the end. An object can run many sessions, one after another; each start
/// of a session resets it.
///
/// Main queue. Commands return at once and continue in tasks; `view()` shows their results.
/// Failures are never thrown: they appear as status, as the live caption line (`showError`), or as
/// the phase `failed`.
///
/// The screen shows the frame of `view().captionDisplay`, which only `refreshCaptionDisplay`
/// changes; changes of the core do not notify views.
class LiveTranscriptStore final : public std::enable_shared_from_this<LiveTranscriptStore>,
                                  private TranslatedCaptions {
  public:
    static std::shared_ptr<LiveTranscriptStore> make(LiveSessionEnvironment environment);
    ~LiveTranscriptStore() override;
    LiveTranscriptStore(const LiveTranscriptStore&) = delete;

    const SessionView& view() const { return view_; }
    const LiveSystemAudioTranscriber& liveTranscriber() const { return *liveTranscriber_; }
    const LiveRecordingTracker& recordingTracker() const { return recordingTracker_; }
    /// Whether the task of a stop is running. A stop ends in the phase `idle`, whatever fails.
    bool isStopping() const { return stop_.isRunning(); }
    const SessionTexts& texts() const { return texts_; }
    PerfStats mergedLivePerfStats() const;

    // Commands
    void toggleListening(const LiveSessionControlTrigger& trigger);
    /// Accepted in `idle` and `failed`, unless a session is still being saved.
    void startListening(const LiveSessionControlTrigger& trigger);
    /// Accepted while a session starts or listens, and in `idle` and `failed` if a recording is
    /// still to be saved. While the session is being saved, only cancels a queued start.
    void stopListening(const LiveSessionControlTrigger& trigger) { stop_.request(trigger); }
    /// Selects the source of the next session. Saves a running session and then starts another.
    void selectSource(const AudioSource& source);
    /// Changes the setting; a running session then changes to the other recogniser.
    void selectRecognitionOption(const std::string& id);
    void refreshInputDevices();
    /// Flushes the sound and the committed rows of a running session to the disk, for a computer
    /// that is about to sleep. Resumes on the main queue.
    Task<void> secureRecording();
    /// Removes all captions from the screen; they are still saved. A sentence that is still being
    /// spoken reappears when it is committed, or earlier.
    void clearCaptions();

    // Events of the session, called by its parts
    void applyRecognition(const ASREvent& event);
    void handleAudioLevel(double level);
    /// Shows the text as the live caption line. The phase does not change.
    void showError(const std::string& message);
    /// Publishes a new frame if the visible state has changed.
    void refreshCaptionDisplay(const std::string& reason,
                               const LiveCaptionDisplayTranslationPatch* patch = nullptr) override;

  private:
    friend class LiveSessionStop; // the stop of this session, with its own state
    using WeakSelf = std::weak_ptr<LiveTranscriptStore>;
    using Self = std::shared_ptr<LiveTranscriptStore>;

    struct StartRequest;

    explicit LiveTranscriptStore(LiveSessionEnvironment environment);

    // LiveTranscriptStore+Translation.cpp: called by the translation
    const CaptionCore::Rows& committedSegments() const override { return *core_.committedSegments; }
    /// Also writes added and removed translations to the journal, so that a crash does not lose
    /// them.
    void
    changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change) override;
    void setStatusMessage(const std::string& text) override;
    void updatePersistedTranscriptIfStopped() override;
    void appendTranslationObservation(const TranslationObservation& observation) override;
    bool keepsTextsForDiagnosis() const override;

    // LiveTranscriptStore+Callbacks.cpp
    void observeSettings();
    void configureCoreCallbacks();
    void configureTranscriberCallbacks();
    void handleCommit(const CaptionCore::Rows& rows);
    void handleActivity(CaptionCore::Activity activity);
    void handleBoundaryDecision(const BoundaryObservation& observation);
    void handleRecognitionEvent(const ASREvent& event);
    void handleGuessWithdrawn();

    // LiveTranscriptStore+Lifecycle.cpp
    static Task<void> runStart(WeakSelf weak, StartRequest start);
    static Task<void> startSession(Self self, StartRequest start);
    void failStart(const StartRequest& start, const std::exception_ptr& failure);
    void discardRecording();
    void resetTranscriptForNewSession();
    void startDiagnostics(const AudioSource& source);
    void finishDiagnosticsSnapshot();
    void logPrepared(const AudioSource& source, const LiveSessionControlTrigger& trigger);
    void handleAudioInactivityTimeout(double idleSeconds, double timeoutSeconds);
    void recognitionOptionChanged(const std::string& id);
    static Task<void> runSwap(WeakSelf weak, std::uint64_t session, bool hadRun);
    void applySessionTransition(const std::optional<LiveSessionTransition>& transition);

    Host& host() const { return environment_.speech.host; }
    double now() const { return host().now(); }

    const LiveSessionEnvironment environment_;
    CaptionClock captionClock_;
    CaptionCore core_;
    LiveCaptionMessage message_{core_};
    LiveCaptionDisplay display_;
    SessionView view_;
    SessionLog log_;
    const std::shared_ptr<LiveSystemAudioTranscriber> liveTranscriber_;
    LiveRecordingTracker recordingTracker_;
    LiveSessionStateMachine sessionState_; // the authority on the phase
    CaptureStatus captureStatus_;
    LiveSessionStop stop_;
    std::uint64_t startNumber_ = 0;
    SessionInactivityStop inactivity_;
    SessionDurationClock durationClock_;
    LiveCaptionPerfCounters pipelinePerf_;
    SessionTexts texts_;
    Observations observations_; // of settings
};

} // namespace tessarune
