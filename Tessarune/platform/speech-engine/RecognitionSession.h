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
/// the process is stopped, swapped out or suspended with the computer. Any thread.
double processorSecondsOfProcess();

/// How the engine is driven.
struct RecognitionPolicy {
    /// A high-pass cutoff in Hz: rumble costs the engine words, and speech has little there that it
    /// needs. 0: no filter.
    double lowestHertz = 200;
    bool removesHum = true; ///< mains hum can keep the engine from hearing speech at all
    /// Seconds between two passes while the computer is fast enough.
    double passInterval = 0.2;
    /// The minimum pause after a pass, as a multiple of its cost; leaves half of the computer's
    /// time to others.
    double passCostFactor = 2;
    /// The maximum pause, however expensive a pass was.
    double longestRest = 2.0;
    /// With this much new sound there is no pause: a file that plays faster than real time arrives
    /// in such pieces.
    double enoughSound = 4.0;
    /// The clock that measures the cost of a pass. Elapsed time alone is not enough: it includes
    /// time in which the process was suspended.
    std::function<double()> processorSeconds = processorSecondsOfProcess;
    /// The maximum time to the next pass for which words wait until it confirms them.
    double longestWaitForAgreement = 0.6;
    /// A shorter line is left to the engine, which closes it at the next pause and does so better.
    double shortestLineToClose = 5;
    /// How long a line that is to be closed may wait for a rest between two words.
    double longestWaitForRest = 1.0;
    /// Live sound is continuous. After this much time without any, its source is gone and the open
    /// line is closed: its end should not wait for the source to return.
    double longestStandstill = 2.0;
    /// The maximum backlog of unprocessed sound. More is dropped, so that a computer that cannot
    /// keep up skips some sound and its memory does not grow.
    double mostUnheardSeconds = 60;
    /// The number of complete lines after which the engine's stream is recreated to keep its list
    /// short.
    std::size_t linesBeforeRestart = 300;
    /// The criteria for a recording's model.
    std::uint64_t memoryBytes = memoryBytesOfComputer();
};

/// How far the running session is behind, for sources that can wait. Any thread.
struct RecognitionBacklog {
    std::atomic<double> seconds = 0; ///< of sound that was taken and not looked at yet
};

/// The sound of one session on its way through the engine. Everything but `end` runs on the given
/// worker queue; the results go to a stream that is read elsewhere. The first failure of the engine
/// ends the results with it, and everything after it is dropped.
class RecognitionSession : public std::enable_shared_from_this<RecognitionSession> {
  public:
    RecognitionSession(Host& host, Executor worker, std::shared_ptr<SpeechModels> models,
                       SpeechTranscriberOptions options, AsyncStream<SpeechResult> results,
                       RecognitionPolicy policy, std::shared_ptr<RecognitionBacklog> backlog);

    /// Loads the model and runs some seconds of silence through it. Throws.
    void prepare();
    /// Makes the engine's stream. Throws.
    void begin();
    /// Takes sound and runs a pass if it is due, else later.
    void take(const AudioBuffer& buffer);
    /// All sound has been given: recognises the remainder and ends the results.
    void finish();
    /// Closes a long open line that began before this time of the session, as soon as the sound
    /// rests for a moment; otherwise the engine closes it at its end. `done` is resumed once that
    /// is decided.
    void closeLine(double through, OneShot<bool> done);
    /// Recreates the engine's stream if its list is long and no line is open.
    void forgetOldLines();
    /// Frees the engine's stream.
    void release();
    /// Ends the results with a failure.
    void fail(std::exception_ptr failure);

    /// Ends the results at once. Any thread; `release` is still to be called.
    void end() const { results_.finish(); }

    /// Seconds of sound that were taken.
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
    std::vector<float> recent_;       ///< the end of the sound that was taken
    double nextPassAt_ = 0;           ///< host time; before it only where there is enough sound
    double lastPassAt_ = 0;           ///< host time
    std::optional<double> passDueAt_; ///< host time for which the next pass is scheduled
    std::uint64_t passRound_ = 0;     ///< the schedule that counts
    bool hasNewSound_ = false;
    double movedAt_ = 0; ///< host time at which sound was last taken or looked at
    bool standstillIsWatchedFor_ = false;
    double standstillLookAt_ = 0; ///< host time
    QuietDetector quiet_;
    std::optional<Closing> closing_;

    // Of passes over live sound that recognised something:
    double busySeconds_ = 0;
    double busyLineSeconds_ = 0; ///< of open line, counted once per pass
    std::size_t busyPasses_ = 0;
};

} // namespace tessarune
