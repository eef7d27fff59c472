#pragma once

#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/SessionJournal.h"
#include "Tessarune/session/LiveAudioInactivityAutoStop.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/session/LiveCaptionPerfCounters.h"
#include "Tessarune/session/LiveHistoryText.h"
#include "Tessarune/session/LiveRecordingTracker.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/LiveSessionStateMachine.h"
#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "Tessarune/session/SessionDiagnostics.h"
#include "Tessarune/session/SessionDurationClock.h"
#include "Tessarune/session/SessionTranslation.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/translation/TranslationLanguagePreparation.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/observation/Published.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <source_location>
#include <span>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tessarune {

/// The one object that owns a listening session: it starts and stops the sound, feeds the captions,
/// keeps the recording, and saves everything at the end. One for the process; a session resets it.
///
/// Main queue. Commands return at once and go on in tasks; what comes of them shows in
/// `sessionPhase` and the other published fields, which views only read. Failures are never thrown:
/// they show as status text, as the live caption line (`showError`), or as the phase `failed`.
///
/// What is on the screen changes only together with a call of `refreshCaptionDisplay`, whose reason
/// the observers of `captionDisplayRefresh` get; changes of the core by themselves announce
/// nothing.
class LiveTranscriptStore : public std::enable_shared_from_this<LiveTranscriptStore> {
  public:
    /// What a session works with. All that is named by reference outlives the store.
    struct Environment {
        SpeechPlatform speech;
        SoundServer& sound;
        FileSystem& files;
        AppSettings& settings;
        PermissionsManager& permissions;
        RecordingCatalog& catalog;
        std::shared_ptr<AudioSessionRecorder> recorder;
        RecordingAudioCompressor& compressor;
        SessionTranslation translation;
        SessionDiagnostics diagnostics;
        /// A recording was saved; nothing to do for an absent request.
        std::function<void(const std::optional<HistoryRefinementRequest>&)>
            scheduleHistoryRefinement;
        /// Returns free memory to the operating system; any thread.
        std::function<void()> returnMemory;
    };
    static std::shared_ptr<LiveTranscriptStore> make(Environment environment);
    ~LiveTranscriptStore();
    LiveTranscriptStore(const LiveTranscriptStore&) = delete;
    LiveTranscriptStore& operator=(const LiveTranscriptStore&) = delete;

    // What views read

    /// From the moment at which a start is accepted until a stop is.
    Published<bool> isListening;
    Published<LiveSessionPhase> sessionPhase;
    double audioLevel = LiveSessionStateMachine::restingAudioLevel; ///< 0 to 1; views poll it
    CaptionCore core;
    Published<std::string> statusMessage;
    Published<std::string> translationStatusMessage;
    Published<TranslationPreparationDisplayState> translationPreparationDisplayState;
    Published<std::string> ghostTranslationText;
    Published<bool> isTranslationVisible;
    Published<std::string> latestBoundarySummary;
    Published<std::vector<AudioInputDevices::Device>> inputDevices;
    Published<AudioSource> selectedSource;
    Published<std::unordered_set<UUID>> clearedSegmentIDs; ///< rows that the user cleared
    Published<bool> hasVisibleSourceTextFlag;
    Published<std::string> liveHistoryText; ///< all that was said so far, renewed once a second
    Published<double> sessionDuration;      ///< seconds
    /// How much of the recording has been compressed, 0 to 1; nothing while none is.
    Published<std::optional<double>> audioCompressProgress;
    /// The last text that `showError` got.
    Published<std::string> presentedError;
    /// Assigned whenever a diagnostics run may have begun or ended.
    Published<bool> isDiagnosticsRunning;
    /// The reason of the last `refreshCaptionDisplay`; assigned at each.
    Published<std::string> captionDisplayRefresh;

    const LiveSystemAudioTranscriber& liveTranscriber() const { return *liveTranscriber_; }
    const AppSettings& settings() const { return environment_.settings; }
    const LiveRecordingTracker& recordingTracker() const { return recordingTracker_; }
    /// Why the last start failed, for a front end that tells failures apart.
    const std::exception_ptr& startFailure() const { return startFailure_; }
    /// A stop is under way. It ends in the phase `idle`, whatever fails.
    bool isStopping() const { return stopTask_.has_value(); }
    bool hasVisibleSourceText() const;
    TranscriptSnapshot exportTranscriptSnapshot() const;
    PerfStats mergedLivePerfStats() const;

    // Commands

    void toggleListening(const LiveSessionControlTrigger& trigger);
    /// Accepted in `idle` and `failed`.
    void startListening(const LiveSessionControlTrigger& trigger);
    /// Accepted from a start on, and where a recording is still to be saved.
    void stopListening(const LiveSessionControlTrigger& trigger);
    /// A running session is saved, and another begins with the new source.
    void selectSource(const AudioSource& source);
    /// A running session goes over to the other recogniser.
    void selectRecognitionOption(const std::string& id);
    void refreshInputDevices();

    // Events of the session; the callbacks of its parts end here

    void applyRecognition(const ASREvent& event);
    void handleAudioLevel(double level);
    /// Shows the text as the live caption line. The phase stays.
    void showError(const std::string& message);
    void refreshCaptionDisplay(const std::string& reason);

    // For the translation of the captions

    /// Changes translation fields of the committed rows, as one change.
    void changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change);
    /// The translation of these rows has come, or was taken away: a crash from now on leaves them
    /// as they are.
    void translationLanded(std::span<const UUID> segmentIDs);
    /// A translation that comes after the stop still reaches the saved transcript.
    void updatePersistedTranscriptIfStopped();

  private:
    using WeakSelf = std::weak_ptr<LiveTranscriptStore>;
    using Self = std::shared_ptr<LiveTranscriptStore>;
    using Phase = SessionDiagnostics::LifecycleEntry::Phase;

    /// A start on its way through its task.
    struct Start {
        std::uint64_t number;
        AudioSource source;
        std::string optionID;
        double startedAt;
        LiveSessionControlTrigger trigger;
    };
    /// A step of the stop that the run's lifecycle log shows as a span.
    struct Step {
        std::string name;
        double startedAt;
    };

    explicit LiveTranscriptStore(Environment environment);

    // LiveTranscriptStore+Callbacks.cpp
    void bridgeCoreChanges();
    void bridgeDiagnosticsSetting();
    void configureCoreCallbacks();
    void configureTranscriberCallbacks();
    template <typename Value, typename Body>
    std::function<void(const Value&)> onMain(Body body);
    void handleCommit(const CaptionCore::Rows& rows);
    void handleActivity(CaptionCore::Activity activity);
    void handleBoundaryDecision(const BoundaryObservation& observation);
    void handleRecordingStarted(const RecordingMetadata& metadata);
    void handleRecognitionEvent(const ASREvent& event);
    void handleLevelEvent(double level);
    void handleGuessWithdrawn();
    void handleSystemAudioSilent();
    void handleCaptureEvent(const CaptureEvent& event);

    // LiveTranscriptStore+Lifecycle.cpp
    void beginSession(const LiveSessionControlTrigger& trigger);
    static Task<void> runStart(WeakSelf weak, Start start);
    static Task<void> startSteps(Self self, Start start);
    void failStart(const Start& start, const std::exception_ptr& failure);
    void discardLateStart();
    void discardCurrentRecording();
    bool isSuperseded(const Start& start) const { return start.number != startNumber_; }
    void resetTranscriptForNewSession();
    void startDiagnostics(const AudioSource& source);
    void logPrepared(const AudioSource& source, const LiveSessionControlTrigger& trigger);
    void startAudioInactivityAutoStop();
    void handleAudioInactivityTimeout(double idleSeconds, double timeoutSeconds);
    void startDurationTimer();
    static Task<void> runSwap(WeakSelf weak, std::uint64_t session, bool hadRun);
    void applySessionTransition(const std::optional<LiveSessionTransition>& transition);

    // LiveTranscriptStore.cpp
    /// Writes to the runtime log.
    void log(const std::string& name, const LogFields& fields = {},
             Importance importance = Importance::routine,
             std::source_location source = std::source_location::current());
    /// As `log`, and an instant in the run's lifecycle log.
    void logLifecycle(const std::string& name, const LogFields& fields,
                      Importance importance = Importance::routine,
                      std::source_location source = std::source_location::current());
    void recordLifecycle(const std::string& name, Phase phase, const LogFields& fields = {},
                         std::optional<double> elapsedSeconds = std::nullopt);

    // LiveTranscriptStore+SessionTeardown.cpp
    static Task<void> runStop(WeakSelf weak, std::uint64_t number);
    static Task<void> drainEngine(Self self);
    static Task<void> finalizeStoppedSession(Self self);
    Step beginFinalize();
    void sealLiveIntoCommittedForStop();
    static Task<bool> drainTranslation(Self self);
    void finishDiagnosticsForStop();
    void finishDiagnosticsSnapshot();
    bool persistForStop();
    bool persistTranscript();
    std::optional<HistoryRefinementRequest> refinementRequest() const;
    void cleanUpForStop();
    void bigCleanup();
    void returnToIdle(bool transcriptPersisted);
    void reportFinalized(const Step& step, bool transcriptPersisted, bool translationCompleted);
    void finishFinalize();
    Step beginStep(std::string name, const LogFields& fields = {});
    void finishStep(const Step& step, const LogFields& fields = {});
    LogFields elapsed(double since) const;
    LogFields stopTriggerFields() const;
    LogFields liveCounts() const;
    LogFields committedCounts() const;

    // LiveTranscriptStore+Compression.cpp
    static Task<void> compressStoppedRecordingIfNeeded(Self self);
    void skipCompression(const char* reason, LogFields fields = {});
    MediaProgress compressProgressOnMain();
    void reportCompressed(const RecordingMetadata& source, const RecordingMetadata& result,
                          const Step& step);
    void reportCompressFailure(const RecordingMetadata& source, const std::string& error,
                               const Step& step);

    // LiveTranscriptStore+Translation.cpp
    void setTranslationStatusMessage(const std::string& text);
    void journal(const CaptionSegment& row);
    void beginJournal(const RecordingMetadata& metadata);

    // LiveTranscriptStore+Display.cpp
    void presentMessage(const std::string& text);
    bool showsMessage() const;
    void takeMessageAway();
    void updateVisibleSourceTextFlag();
    void updateLiveHistoryTextIfNeeded(bool force);

    Host& host() const { return environment_.speech.host; }
    TessaruneFileLogger& logger() const { return environment_.speech.logger; }
    double now() const { return host().now(); }
    std::int64_t elapsedMS(double since) const;

    const Environment environment_;
    const std::shared_ptr<LiveSystemAudioTranscriber> liveTranscriber_;
    const std::shared_ptr<SerialQueue> utilityQueue_;
    LiveRecordingTracker recordingTracker_;
    std::unique_ptr<SessionJournal> journal_;

    LiveSessionStateMachine sessionState_; // the authority on the phase
    bool isStarting_ = false;
    bool pendingStartAfterStop_ = false;
    std::optional<LiveSessionControlTrigger> currentStopTrigger_;
    std::uint64_t startNumber_ = 0;
    std::exception_ptr startFailure_;
    std::optional<TaskHandle> stopTask_; // present exactly while the stop task lives
    std::uint64_t stopNumber_ = 0;
    double stopRequestedAt_ = 0;
    bool isFinalizing_ = false; // as `stopTask_`, but over when a restart may begin
    bool didReachListening_ = false;
    bool isCaptureInterrupted_ = false; // and the status line says so

    std::optional<LiveAudioInactivityAutoStopConfiguration>
        sessionAudioInactivityAutoStopConfiguration_;
    LiveAudioInactivityAutoStop audioInactivityAutoStop_;
    SessionDurationClock durationClock_;
    LiveCaptionPerfCounters pipelinePerf_;
    double liveHistoryTextLastUpdateWall_ = 0;
    LiveHistoryText liveHistory_;
    std::optional<CaptionSegment> message_; // what `presentMessage` put in the live caption line
    Published<DiagnosticsLevel>::Token diagnosticsSettingBridge_ = 0;
};

} // namespace tessarune
