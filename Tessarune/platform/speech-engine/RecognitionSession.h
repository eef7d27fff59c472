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
    /// The cutoff of the high-pass filter in Hz; 0: no filter. Rumble makes the engine miss words,
    /// and it needs little of the speech below the cutoff.
    double lowestHertz = 200;
    bool removesHum = true; ///< mains hum can keep the engine from hearing speech at all
    /// Seconds between two passes while the computer is fast enough.
    double passInterval = 0.2;
    /// The minimum time from the start of one pass to the next, as a multiple of the pass's cost; 2
    /// leaves half of the time to other programs.
    double passCostFactor = 2;
    /// The maximum seconds by which `passCostFactor` delays the next pass after the end of one.
    double longestIdle = 2.0;
    /// With this many seconds of new sound, the next pass does not wait: a file that plays faster
    /// than real time arrives in such pieces.
    double enoughSound = 4.0;
    /// The clock that measures the cost of a pass. Elapsed time alone is not enough: it includes
    /// time in which the process was suspended.
    std::function<double()> processorSeconds = processorSecondsOfProcess;
    /// Words wait for confirmation by the next pass only if it follows within this many seconds.
    double longestWaitForAgreement = 0.6;
    /// A line of fewer seconds is not closed early: the engine closes it at the next pause, which
    /// is a better place.
    double shortestLineToClose = 5;
    /// To close a line early, the maximum seconds to wait for a rest between two words.
    double longestWaitForRest = 1.0;
    /// Live sound is continuous. After this many seconds without sound, the source is gone: the
    /// open line is closed, so that its text does not wait until the source returns.
    double longestStall = 2.0;
    /// The maximum seconds of unprocessed sound. A longer backlog is dropped: a computer that
    /// cannot keep up skips sound, and its memory does not fill.
    double longestBacklog = 60;
    /// The number of complete lines after which the engine's stream is recreated to keep its list
    /// short.
    std::size_t linesBeforeRestart = 300;
    /// The memory of this computer; 0 if unknown. A recording is transcribed with the largest model
    /// that fits. The session does not use it.
    std::uint64_t memoryBytes = memoryBytesOfComputer();
};

/// How far the running session is behind, for sources that can wait. Written on the worker queue,
/// read on any thread.
struct RecognitionBacklog {
    std::atomic<double> seconds = 0; ///< of sound that no pass has covered yet
};

/// Feeds the sound of one session to the engine. All functions but `end` run on the given worker
/// queue; the results go to a stream that is read elsewhere. The first failure of the engine ends
/// that stream with the failure; later sound is dropped. Made with `std::make_shared`: scheduled
/// work ends with the session. The host must outlive it.
class RecognitionSession : public std::enable_shared_from_this<RecognitionSession> {
  public:
    RecognitionSession(Host& host, Executor worker, std::shared_ptr<SpeechModels> models,
                       SpeechTranscriberOptions options, AsyncStream<SpeechResult> results,
                       RecognitionPolicy policy, std::shared_ptr<RecognitionBacklog> backlog);

    /// Loads the model and warms it up with some seconds of silence. Throws if that fails.
    void prepare();
    /// Creates the engine's stream, and loads the model if necessary. Throws if that fails.
    void begin();
    /// Takes sound (`speechSampleRate`, one channel) and schedules a pass.
    void take(const AudioBuffer& buffer);
    /// Recognises the remaining sound, ends the results and releases the session.
    void finish();
    /// Closes the open line at the next rest in the sound, if the line is long and began before
    /// `cutoff` (seconds of the session). If no rest comes soon, the engine closes it later.
    /// Resumes `done` when this is decided, after `longestWaitForRest` at the latest; its value
    /// means nothing.
    void closeLine(double cutoff, OneShot<bool> done);
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
        double deadline; ///< seconds of the session; after that, the engine closes the line
        std::vector<OneShot<bool>> waiting;
    };

    void schedulePass();
    void passAsScheduled();
    void pass(bool closesLine = false);
    void noteCost(double began, double cost);
    void dropBacklog();
    void watchForStall();
    void closeIfStalled();
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
    std::vector<float> recent_;       ///< the last seconds of sound, for a new stream
    double nextPassAt_ = 0;           ///< host time; with `enoughSound` a pass may be earlier
    double lastPassAt_ = 0;           ///< host time of its start
    std::optional<double> passDueAt_; ///< host time for which the next pass is scheduled
    std::uint64_t passRound_ = 0;     ///< of the latest schedule; older ones are void
    bool hasNewSound_ = false;
    double lastProgressAt_ = 0; ///< host time of the last sound or pass
    bool isStallWatched_ = false;
    double stallCheckAt_ = 0; ///< host time for which the check is scheduled
    QuietDetector quiet_;
    std::optional<Closing> closing_;

    // Sums over the passes on live sound with an open line. They give the speed of the model.
    double measuredCost_ = 0;        ///< seconds
    double measuredLineSeconds_ = 0; ///< lengths of the open line at each pass
    std::size_t measuredPasses_ = 0;
};

} // namespace tessarune
