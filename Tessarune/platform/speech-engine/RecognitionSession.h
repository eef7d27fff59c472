#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/platform/speech-engine/HighPass.h"
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

/// Seconds of processor time that this process has used, on all its threads. Stands still while
/// the process is stopped, swapped out or asleep with the computer. Any thread.
double processorSecondsOfProcess();

/// How the engine is driven.
struct RecognitionPolicy {
    /// What is below is kept from the engine: rumble costs it words, and speech has little there
    /// that it needs. 0: it hears everything.
    double lowestHertz = 200;
    /// Seconds from one look at the sound to the next, while the computer is quick enough.
    double passInterval = 0.2;
    /// Of these, how many times the last look's own time must have passed; leaves the computer half
    /// of its time.
    double passCostFactor = 2;
    /// However much a look has cost, no longer rest follows it.
    double longestRest = 2.0;
    /// So much new sound is looked at without any rest: that of a file that plays faster than it
    /// sounds comes in such pieces.
    double enoughSound = 4.0;
    /// What the cost of a look is taken from. The time that has gone by is not enough: it also
    /// holds what passed while the process did not run.
    std::function<double()> processorSeconds = processorSecondsOfProcess;
    /// How soon the next look must come for words to wait until it agrees on them.
    double longestWaitForAgreement = 0.6;
    /// A shorter line is left to the engine, which closes it at the next pause and better.
    double shortestLineToClose = 5;
    /// How long a line that is to be closed may wait for a rest between two words.
    double longestWaitForRest = 1.0;
    /// Live sound comes without a pause. Where none has come for so long, its source is gone, and
    /// the open line is closed: nobody should wait for its end until the source is back.
    double longestStandstill = 2.0;
    /// Sound that was not looked at beyond this is given up, so that a computer that cannot keep up
    /// at all skips something now and then and holds no more and no more of it.
    double mostUnheardSeconds = 60;
    /// Complete lines after which the engine's stream is made anew, so that its list stays short.
    std::size_t linesBeforeRestart = 300;
    /// What the model for a recording is chosen by.
    std::uint64_t memoryBytes = memoryBytesOfComputer();
};

/// How far the running session is behind, for those who can wait for it. Any thread.
struct RecognitionBacklog {
    std::atomic<double> seconds = 0; ///< of sound that was taken and not looked at yet
};

/// One session's sound on its way through the engine. Everything happens on the worker queue that
/// was given, `end` apart; the results go to a stream that is read elsewhere. The first failure of
/// the engine ends the results with it, and what comes after is dropped.
class RecognitionSession : public std::enable_shared_from_this<RecognitionSession> {
  public:
    RecognitionSession(Host& host, Executor worker, std::shared_ptr<SpeechModels> models,
                       SpeechTranscriberOptions options, AsyncStream<SpeechResult> results,
                       RecognitionPolicy policy, std::shared_ptr<RecognitionBacklog> backlog);

    /// Loads the model and runs some seconds of silence through it. Throws.
    void prepare();
    /// Makes the engine's stream. Throws.
    void begin();
    /// Takes sound and looks at it if it is time, else soon.
    void take(const AudioBuffer& buffer);
    /// All sound has been given: recognises what is left and ends the results.
    void finish();
    /// Closes the open line, if it began before this time of the session and is long, as soon as
    /// the sound rests for a moment; else the engine closes it when it finds its end. `done` is
    /// resumed when that is decided.
    void closeLine(double through, OneShot<bool> done);
    /// Makes the engine's stream anew if its list has grown long and no line is open.
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
    double busyLineSeconds_ = 0; ///< of open line, each as often as it was looked at
    std::size_t busyPasses_ = 0;
};

} // namespace tessarune
