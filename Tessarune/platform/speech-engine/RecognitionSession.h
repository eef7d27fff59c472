#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/platform/speech-engine/HighPass.h"
#include "Tessarune/platform/speech-engine/HumFilter.h"
#include "Tessarune/platform/speech-engine/MoonshineModel.h"
#include "Tessarune/platform/speech-engine/QuietDetector.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/platform/speech-engine/TranscriptReader.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/AsyncStream.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tessarune {

/// Seconds of processor time that this process has used, on all its threads. Does not advance while
/// the process is stopped or swapped out, or the computer is suspended. Any thread.
double processorSecondsOfProcess();

/// How the engine is driven.
struct RecognitionPolicy {
    /// A high-pass cutoff in Hz: with rumble the engine misses words, and it needs little of the
    /// speech at these frequencies. 0: no filter.
    double lowestHertz = 200;
    bool removesHum = true; ///< mains hum can keep the engine from hearing speech at all
    /// Seconds between two passes while the computer is fast enough.
    double passInterval = 0.2;
    /// The minimum time from the start of one pass to the next, as a multiple of the pass's cost; 2
    /// leaves half of the time to other programs.
    double passCostFactor = 2;
    /// The maximum pause, however expensive a pass was.
    double longestRest = 2.0;
    /// With this many seconds of new sound, the next pass does not wait: a file that plays faster
    /// than real time arrives in such pieces.
    double enoughSound = 4.0;
    /// The clock that measures the cost of a pass. Elapsed time alone is not enough: it includes
    /// time in which the process was suspended.
    std::function<double()> processorSeconds = processorSecondsOfProcess;
    /// Words wait for confirmation by the next pass only if it follows within this many seconds.
    double longestWaitForAgreement = 0.6;
    /// Seconds. A shorter line is left to the engine, which closes it at the next pause, a better
    /// place.
    double shortestLineToClose = 5;
    /// The maximum wait for a rest between two words at which a line can be closed.
    double longestWaitForRest = 1.0;
    /// Live sound is continuous. After this many seconds without any, its source is gone and the
    /// open line is closed: its end should not wait for the source to return.
    double longestStandstill = 2.0;
    /// The maximum seconds of unprocessed sound. A longer backlog is dropped: a computer that
    /// cannot keep up skips sound, and its memory does not fill.
    double mostUnheardSeconds = 60;
    /// The number of complete lines after which the engine's stream is recreated to keep its list
    /// short.
    std::size_t linesBeforeRestart = 300;
    /// The computer's memory, which limits the size of a recording's model.
    std::uint64_t memoryBytes = memoryBytesOfComputer();
};

/// How far the running session is behind, for sources that can wait. Any thread.
struct RecognitionBacklog {
    std::atomic<double> seconds = 0; ///< of sound that no pass has covered yet
};

/// Passes the sound of one session through the engine. All functions but `end` run on the given
/// worker queue; the results go to a stream that is read elsewhere. The first failure of the engine
/// ends that stream with the failure; later sound is dropped.
class RecognitionSession : public std::enable_shared_from_this<RecognitionSession> {
  public:
    RecognitionSession(Host& host, Executor worker, std::shared_ptr<SpeechModels> models,
                       SpeechTranscriberOptions options, AsyncStream<SpeechResult> results,
                       RecognitionPolicy policy, std::shared_ptr<RecognitionBacklog> backlog);

    /// Loads the model and runs some seconds of silence through it. Throws if that fails.
    void prepare();
    /// Creates the engine's stream, and loads the model if necessary. Throws if that fails.
    void begin();
    /// Takes sound and schedules a pass.
    void take(const AudioBuffer& buffer);
    /// Recognises the remaining sound and ends the results.
    void finish();
    /// Closes a long open line that began before `through` (seconds of the session) at the next
    /// rest in the sound; if none comes soon, the engine closes it. Resumes `done` when this is
    /// decided.
    void closeLine(double through, OneShot<bool> done);
    /// Recreates the engine's stream if its list is long and no line is open.
    void forgetOldLines();
    /// Frees the engine's stream and stores the measured speed of the model.
    void release();
    /// Ends the results with a failure.
    void fail(std::exception_ptr failure);

    /// Ends the results at once. Any thread; `release` must still be called.
    void end() const { results_.finish(); }

    /// The seconds of sound taken so far.
    double takenSeconds() const;

  private:
    struct Closing {
        double before; ///< seconds of the session
        std::vector<OneShot<bool>> waiting;
    };

    void schedulePass();
    void passAsScheduled();
    void pass(bool closesLine = false);
    void noteCost(double began, double cost);
    void giveUpUnheard();
    void watchForStandstill();
    void closeIfStandingStill();
    void closeIfResting();
    void endClosing();
    void deliver(const moonshine::Transcript& transcript, bool looksAgainSoon);
    void restart();
    template <typename Work>
    void guarded(Work work);
    template <typename Work>
    void later(double seconds, Work work);

    Host& host_;
    Executor worker_;
    std::shared_ptr<SpeechModels> models_;
    AsyncStream<SpeechResult> results_;
    RecognitionPolicy policy_;
    std::shared_ptr<RecognitionBacklog> backlog_;
    TranscriptReader reader_;
    HighPass highPass_;
    HumFilter humFilter_;

    std::shared_ptr<MoonshineModel> model_;
    std::optional<MoonshineStream> stream_;
    std::uint64_t takenSamples_ = 0;
    std::vector<float> recent_;       ///< the most recent sound
    double nextPassAt_ = 0;           ///< host time; earlier only with `enoughSound`
    double lastPassAt_ = 0;           ///< host time
    std::optional<double> passDueAt_; ///< host time for which the next pass is scheduled
    std::uint64_t passRound_ = 0;     ///< number of the valid schedule
    bool hasNewSound_ = false;
    double movedAt_ = 0; ///< host time of the last sound or pass
    bool standstillIsWatchedFor_ = false;
    double standstillLookAt_ = 0; ///< host time
    QuietDetector quiet_;
    std::optional<Closing> closing_;

    // Of passes over live sound with an open line:
    double busySeconds_ = 0;
    double busyLineSeconds_ = 0; ///< lengths of the open line at each pass
    std::size_t busyPasses_ = 0;
};

} // namespace tessarune
