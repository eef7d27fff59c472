#pragma once

#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/MicrophoneCapture.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/audio/SystemAudioCapture.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/speech/SoleLock.h"
#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"
#include "Tessarune/speech/SpeechPlatform.h"
#include "TessaruneCore/recognition/RecognitionOption.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Connects the sound of a session: each buffer goes from the capture to the recorder and to the
/// recognition engine.
///
/// `start`, `stop`, `finishDrainingAndStop` and `swapEngine` are called on the main queue and
/// resume there. A start throws CancellationError if another start or an end overtakes it; a swap
/// throws it if another swap, a start or an end overtakes it. The later call ends what the earlier
/// call has started. Buffers arrive on the capture's queue. Callbacks are called on any thread and
/// without a lock; set them before the first start.
class LiveSystemAudioTranscriber final
    : public SystemAudioCaptureDelegate,
      public std::enable_shared_from_this<LiveSystemAudioTranscriber> {
  public:
    /// The references outlive the object.
    struct Environment {
        SpeechPlatform speech;
        SoundServer& sound;
        const AppSettings& settings;
        PermissionsManager& permissions;
        std::shared_ptr<AudioSessionRecorder> recorder; ///< this object sets its callbacks
        /// Called before a session is recorded; returns whether that is allowed. Empty means yes.
        std::function<bool()> mayRecord = {};
    };
    static std::shared_ptr<LiveSystemAudioTranscriber> make(Environment environment);
    LiveSystemAudioTranscriber(const LiveSystemAudioTranscriber&) = delete;
    LiveSystemAudioTranscriber& operator=(const LiveSystemAudioTranscriber&) = delete;

    std::function<void(const ASREvent&)> onASREvent;
    /// The partial since the last final is withdrawn, and no final follows for it.
    std::function<void()> onGuessWithdrawn;
    std::function<void(double)> onLevel;
    std::function<void(const RecordingMetadata&)> onRecordingStarted;
    std::function<void(const AudioSessionRecorder::FirstSample&)> onFirstSample;
    std::function<void(const RecordingMetadata&)> onRecordingFinished;
    std::function<void(const std::string&)> onError; ///< a text for the user
    std::function<void(double)> onAudioBufferInfo;   ///< the sample rate, when it changes
    std::function<void(const AppleSpeechAnalyzerRawResultRecord&)> onAppleRawResult;
    std::function<void(const AppleSpeechAnalyzerSummaryRecord&)> onAppleSummaryResult;
    std::function<void(const AppleFinalReconcileDecisionRecord&)> onAppleFinalReconcile;
    std::function<void()> onSystemAudioSilent;
    /// The sound was interrupted, has resumed, or comes from another device.
    std::function<void(const CaptureEvent&)> onCaptureEvent;

    /// Starts engine, recorder and capture, in this order. If one fails, stops the others and
    /// throws its exception, which has a text for the user.
    Task<void> start(AudioSource source);
    /// Ends everything without waiting; unprocessed sound is lost.
    void stop();
    /// Ends the capture, drains the engine and closes the recording.
    Task<void> finishDrainingAndStop();
    /// Replaces the engine by the one that the settings select. Capture and recorder continue. Does
    /// nothing without a session.
    Task<void> swapEngine();

    /// Asks the engine for an early final.
    void requestFinalization(const std::string& reason);

    double sampleRate() const;          ///< of the session's latest sound; 0 before the first
    PerfStats perfStats() const;        ///< of the engine; without one, of the last engine
    PerfStats wrapperPerfStats() const; ///< this object's own

  private:
    using Self = std::shared_ptr<LiveSystemAudioTranscriber>;
    using Engine = std::shared_ptr<AudioTranscriber>;

    explicit LiveSystemAudioTranscriber(Environment environment);
    void connect();

    static Task<void> startSession(Self self, AudioSource source);
    static Task<void> startParts(Self self, AudioSource source, std::uint64_t attempt);
    static Task<void> startEngine(Self self, std::uint64_t attempt);
    static Task<void> startMicrophone(Self self, AudioSource source);
    static Task<void> startSystemAudio(Self self);
    static Task<void> drainSession(Self self);
    static Task<void> swap(Self self);
    static Task<void> stopMicrophone(std::shared_ptr<MicrophoneCapture> microphone);

    bool shouldRecord() const;
    RecognitionOption selectedOption() const;
    Engine makeConfiguredTranscriber();
    void attachCallbacks(SpeechAnalyzerTranscriber& engine, AppleAnalyzerDiagnosticsMode mode);
    AppleAnalyzerDiagnosticsMode diagnosticsMode() const;
    std::optional<double> preferredSampleRate() const;
    void abandon();
    /// Installs an engine, or none if null. Returns the previous one and keeps its counters.
    Engine exchangeEngine(Engine next);
    Engine currentEngine() const;
    bool isCurrent(const AudioTranscriber* engine) const;
    void throwIfOvertaken(std::uint64_t attempt) const;

    void handle(AudioBufferPtr buffer);
    void handleLevel(double level);
    void handleCaptureEvent(const CaptureEvent& event);
    void latchSystemAudioPermission();

    void systemAudioCapture(SystemAudioCapture& capture, AudioBufferPtr didOutput) override;
    void systemAudioCaptureDidMeasure(SystemAudioCapture& capture, double level) override;
    void systemAudioCaptureDidStaySilent(SystemAudioCapture& capture) override;
    void systemAudioCaptureDidChange(SystemAudioCapture& capture,
                                     const CaptureEvent& event) override;

    template <typename Callback>
    auto whileCurrent(const AudioTranscriber& engine, Callback callback);

    Executor mainExecutor() const { return Executor::main(host()); }
    Host& host() const { return environment_.speech.host; }
    TessaruneFileLogger& logger() const { return environment_.speech.logger; }
    std::int64_t elapsedMS(double since) const;

    const Environment environment_;
    const std::shared_ptr<SystemAudioCapture> capture_;

    // On the main queue
    std::shared_ptr<MicrophoneCapture> micCapture_;
    std::uint64_t attempt_ = 0; ///< incremented by each start and each end
    bool isActive_ = false;     ///< between a start and an end

    mutable SoleLock transcriberLock_;
    Engine transcriber_ GUARDED_BY(transcriberLock_);

    mutable SoleLock perfLock_;
    bool didLatchSystemAudioPermission_ GUARDED_BY(perfLock_) = false;
    /// A summary of the session's sound.
    struct SoundSummary {
        double sampleRate = 0; ///< the latest
        double buffers = 0;
        double infoEvents = 0;
        double permissionMarkEvents = 0;
        double levelEvents = 0;
    };
    SoundSummary soundSummary_ GUARDED_BY(perfLock_);
    PerfStats lastEnginePerf_ GUARDED_BY(perfLock_);
};

} // namespace tessarune
