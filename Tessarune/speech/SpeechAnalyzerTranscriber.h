#pragma once

#include "Tessarune/speech/AnalyzerEngineSnapshot.h"
#include "Tessarune/speech/AppleFinalReconcileRecord.h"
#include "Tessarune/speech/AppleResultMapping.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "Tessarune/speech/SoleLock.h"
#include "Tessarune/speech/SpeechAnalyzerPerfCounters.h"
#include "Tessarune/speech/SpeechPlatform.h"
#include "TessaruneCore/recognition/ASREvent.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The on-device recogniser as the engine of a live session.
///
/// It batches sound, converts it and feeds it to the analyzer, limits the rate of partial results,
/// and decides between each final and the partial before it. It also asks the analyzer for early
/// finals and lets it drop old sound, so that a long session neither waits for finals nor
/// accumulates sound.
///
/// Threads: `append` and `skip` on the capture thread, results and partials on this object's own
/// queue, everything else on any thread; awaited operations resume on the main queue. There are
/// four locks; no thread holds two of them, and no callback runs under a lock. Background work
/// holds the object weakly and ends once the generation of its session has changed.
///
/// Times are host times; audio times count the sound fed in the session, from 0.
class SpeechAnalyzerTranscriber final
    : public AudioTranscriber,
      public std::enable_shared_from_this<SpeechAnalyzerTranscriber> {
  public:
    static std::shared_ptr<SpeechAnalyzerTranscriber> make(std::string localeIdentifier,
                                                           SpeechPlatform platform);
    ~SpeechAnalyzerTranscriber() override;
    SpeechAnalyzerTranscriber(const SpeechAnalyzerTranscriber&) = delete;
    SpeechAnalyzerTranscriber& operator=(const SpeechAnalyzerTranscriber&) = delete;

    /// Callbacks for the results, called on this object's queue. Set them before `start` and leave
    /// them unchanged until the session is over. Leave `onRawResult` and `onSummaryResult` unset if
    /// they are not needed: their records are expensive.
    std::function<void(const ASREvent&)> onEvent;
    std::function<void(const std::exception&)> onError; ///< no more results follow
    /// The partial since the last final is withdrawn, and no final follows for it.
    std::function<void()> onGuessWithdrawn;
    std::function<void(const AppleSpeechAnalyzerRawResultRecord&)> onRawResult;
    std::function<void(const AppleSpeechAnalyzerSummaryRecord&)> onSummaryResult;
    std::function<void(const AppleFinalReconcileDecisionRecord&)> onReconcileDecision;

    /// Ignores `locale`: the engine works for the locale that this object was made for.
    Task<void> start(std::string locale) override;
    void append(AudioBufferPtr buffer) override;
    void skip(double seconds) override;
    void stop() override;
    Task<void> finishDrainingAndStop() override;
    void reset() override;
    void requestFinalization(std::string reason) override;
    PerfStats perfStats() const override;

  private:
    using Self = std::shared_ptr<SpeechAnalyzerTranscriber>;
    using WeakSelf = std::weak_ptr<SpeechAnalyzerTranscriber>;
    using InputContinuation = AsyncStream<AnalyzerInput>;
    using OneShotAsyncBool = OneShot<bool>;

    // An early final leaves the newest sound (a safety tail) open. The next early final can be
    // requested after a minimum step of audio time or of host time.
    static constexpr double finalizeSafetyTailSeconds = 0.45;
    static constexpr double finalizeMinCutoffSeconds = 0.2;
    static constexpr double finalizeMinAudioStepSeconds = 0.9;
    static constexpr double finalizeMinWallStepSeconds = 1.2;
    // A request to drop old sound names an audio time. The sound before the cutoff is dropped. The
    // cutoff is the audio time minus a safety tail. A request is ignored unless its cutoff is later
    // than the previous cutoff by at least a minimum step.
    static constexpr double cancelSafetyTailSeconds = 1.5;
    static constexpr double cancelMinCutoffSeconds = 0.5;
    static constexpr double cancelMinAudioStepSeconds = 4.0;
    static constexpr double partialCoalesceWindowSeconds = 0.055;
    static constexpr double analyzerInputChunkSeconds = 0.085;
    static constexpr double drainTimeoutSeconds = 3.0;
    static constexpr std::size_t maximumWaitingBatches = 3600; ///< about five minutes

    struct State {
        std::shared_ptr<SpeechAnalyzer> analyzer;
        std::shared_ptr<SpeechTranscriber> transcriber;
        std::optional<InputContinuation> inputCont;
        std::optional<TaskHandle> resultsTask;
        std::optional<AudioFormat> analyzerFormat;
        double segmentStart = 0;   ///< host time at which the running utterance began
        std::int64_t revision = 0; ///< number of partials so far in the running utterance
        std::int64_t rawResultSequence = 0;
        bool didReportFullInput = false;
        std::int64_t generation = 0; ///< incremented at the start and the end of each session
        std::vector<std::string> requestedSpeechOptionStrings;
        double audioEpoch = 0; ///< host time of audio time 0; 0 before the first sound
        double latestAudioTime = 0;
        AudioTimeline timeline; ///< the gaps in the sound
        double lastFinalizeRequestAudioTime = std::numeric_limits<double>::lowest();
        double lastFinalizeRequestWallTime = 0;
        double lastCancelRequestAudioTime = 0;
        std::optional<AppleFinalReconcileCandidate> lastApplePartialCandidate;
        std::optional<double> suppressedFinalsUntilAudioTime;
        SpeechAnalyzerPerfCounters perf;
    };

    /// The data for feeding one batch.
    struct AnalyzerInputSession {
        InputContinuation continuation;
        AudioFormat format;
        std::int64_t generation = 0;
    };

    /// The parts of a session that a stop ends without holding a lock.
    struct SessionTeardown {
        std::shared_ptr<SpeechAnalyzer> analyzer;
        std::optional<InputContinuation> inputContinuation;
        std::optional<TaskHandle> resultsTask;
        std::int64_t generation = 0;
    };

    struct FinalizationPlan {
        std::shared_ptr<SpeechAnalyzer> analyzer;
        double cutoff = 0;
        double latestAudioTime = 0;
        std::int64_t generation = 0;
    };

    struct CancellationPlan {
        std::shared_ptr<SpeechAnalyzer> analyzer;
        double cutoff = 0;
        double sourceAudioTime = 0;
        double latestAudioTime = 0;
        std::int64_t generation = 0;
    };

    /// A session that is starting.
    struct NewSession {
        std::shared_ptr<SpeechAnalyzer> analyzer;
        std::shared_ptr<SpeechTranscriber> transcriber;
        InputContinuation input;
        AudioFormat format;
        std::int64_t generation = 0;
    };

    /// A result that is being processed.
    struct IncomingResult {
        const SpeechResult& result;
        AppleFinalReconcileCandidate candidate;
        AnalyzerEngineSnapshot snapshot;
    };

    SpeechAnalyzerTranscriber(std::string localeIdentifier, SpeechPlatform platform);

    // Start and end of a session
    static Task<void> startSession(Self self);
    static Task<void> runSession(Self self, NewSession session);
    static Task<void> drainSession(Self self);
    static Task<void> finishInput(SessionTeardown session, OneShotAsyncBool drainTimedOut);
    static Task<void> limitDrain(Executor executor, OneShotAsyncBool drainTimedOut,
                                 std::stop_token stop);
    static Task<void> cancelAnalyzer(std::shared_ptr<SpeechAnalyzer> analyzer,
                                     TessaruneFileLogger& logger, std::string locale);
    SpeechTranscriberOptions requestedOptions(std::vector<std::string>& strings) const;
    NewSession beginSession();
    bool startReadingResults(const NewSession& session);
    /// Takes the session out of the state, for `close`, and ends its generation.
    SessionTeardown teardownSession();
    /// Ends the parts that are present, without waiting.
    void close(SessionTeardown session);
    SessionTeardown beginDrainSession();
    void abandonDrain(SessionTeardown session);
    void finishDrainSession(std::int64_t generation);
    bool isCurrent(std::int64_t generation) const;

    // Sound in
    std::optional<AnalyzerInputSession> inputSession() const;
    std::optional<AudioBuffer> takeAccumulator();
    std::vector<AudioBuffer> enqueueAnalyzerInput(const AudioBuffer& buffer);
    void flushInputAccumulator(const std::string& reason);
    void feedAnalyzerInput(const AudioBuffer& batch);
    void noteLostInput(double seconds, std::int64_t generation);
    void reportFullInput();
    std::optional<AudioBuffer> convert(const AudioBuffer& batch, AudioFormat format);
    bool recordAnalyzerInput(double convertedAudioSeconds, std::size_t sourceFrames,
                             const AnalyzerInputSession& session);

    // Results out
    static Task<void> readResults(WeakSelf weak, AsyncStream<SpeechResult> results,
                                  std::int64_t generation, std::stop_token stop);
    void handleResult(const SpeechResult& result, std::int64_t generation);
    void sendDiagnostics(const IncomingResult& incoming);
    void handlePartial(const IncomingResult& incoming);
    void handleFinal(const IncomingResult& incoming);
    void withdrawGuess();
    void applyDecision(const AppleFinalReconcileDecisionRecord& record) REQUIRES_LOCK(stateLock_);
    void emitFinal(const IncomingResult& incoming, const AppleFinalReconcileOutcome& outcome,
                   std::string text);
    AppleResultMapping::TimingInfo timingInfo(const IncomingResult& incoming);

    // Partials at a limited rate
    static Task<void> emitPartialLater(WeakSelf weak, Executor executor,
                                       std::int64_t coalesceGeneration, std::int64_t generation,
                                       std::stop_token stop);
    void queuePartial(std::string text, double timestamp, std::int64_t generation);
    void flushPendingPartial(std::int64_t coalesceGeneration, std::int64_t generation);
    void discardPendingPartial();
    bool hasPendingPartial() const;

    // Early finals and dropped sound
    static Task<void> finalizeThrough(WeakSelf weak, FinalizationPlan plan, std::string reason);
    static Task<void> cancelBefore(WeakSelf weak, CancellationPlan plan, std::string reason);
    std::optional<FinalizationPlan> makeFinalizationPlan();
    void requestAnalysisCancellation(double beforeAudioTime, const std::string& reason);
    std::optional<CancellationPlan> makeCancellationPlan(double beforeAudioTime);

    template <typename Callback, typename Value>
    static void send(const Callback& callback, const Value& value) {
        SoleLock::assertNoneHeld();
        if (callback)
            callback(value);
    }

    double now() const { return platform_.host.now(); }
    Executor mainExecutor() const { return Executor::main(platform_.host); }

    const std::string localeID_;
    const SpeechPlatform platform_;
    const Executor resultsExecutor_;

    mutable SoleLock stateLock_;
    State state_ GUARDED_BY(stateLock_);

    SoleLock converterLock_;
    std::unique_ptr<AudioConverter> converter_ GUARDED_BY(converterLock_);
    /// The converter's input format.
    std::optional<AudioFormat> converterInput_ GUARDED_BY(converterLock_);

    SoleLock inputLock_;
    /// The incomplete batch; the capacity of its samples is the maximum size of a batch.
    std::optional<AudioBuffer> inputAccumulator_ GUARDED_BY(inputLock_);

    mutable SoleLock partialLock_;
    std::optional<std::string> pendingPartialText_ GUARDED_BY(partialLock_);
    double pendingPartialTimestamp_ GUARDED_BY(partialLock_) = 0;
    std::optional<TaskHandle> partialEmitTask_ GUARDED_BY(partialLock_);
    std::int64_t partialCoalesceGeneration_ GUARDED_BY(partialLock_) = 0;
};

} // namespace tessarune
