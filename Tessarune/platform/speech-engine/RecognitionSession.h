#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/platform/speech-engine/HighPass.h"
#include "Tessarune/platform/speech-engine/HumFilter.h"
#include "Tessarune/platform/speech-engine/LineClosing.h"
#include "Tessarune/platform/speech-engine/MoonshineModel.h"
#include "Tessarune/platform/speech-engine/RecognitionPolicy.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/platform/speech-engine/StallWatch.h"
#include "Tessarune/platform/speech-engine/TranscriptReader.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/AsyncStream.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tessarune {

/// How far the running session is behind, for sources that can wait. Written on the worker queue,
/// read on any thread.
struct RecognitionBacklog {
    std::atomic<double> seconds = 0; ///< of sound that no pass has covered yet
};

/// Feeds the sound of one session to the engine. All functions but `end` run on the given worker
/// queue; the results go to a stream that is read elsewhere. The first failure of the engine ends
/// that stream with the failure; later sound is dropped. Create the session with
/// `std::make_shared`, because scheduled work holds weak pointers to it. The host must outlive it.
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
    /// Resumes `done` once the line is closed or left to the engine, after `longestWaitForRest` at
    /// the latest. The value passed to `done` means nothing.
    void closeLine(double cutoff, OneShot<bool> done);
    /// Recreates the engine's stream if its list of lines is long and no line is open.
    void forgetOldLines();
    /// Frees the engine's stream and stores the measured speed of the model.
    void release();
    /// Ends the results with a failure.
    void fail(std::exception_ptr failure);

    /// Ends the results at once. Any thread; `release` must still be called.
    void end() const { results_.finish(); }

  private:
    /// Sums over the passes on live sound with an open line. They give the speed of the model.
    struct PassCosts {
        double seconds = 0;     ///< the work of the passes
        double lineSeconds = 0; ///< the lengths of the open line at the passes
        std::size_t passes = 0;
    };

    /// The seconds of sound taken so far.
    double takenSeconds() const;
    void schedulePass();
    void passAsScheduled();
    void pass(bool closesLine = false);
    void noteCost(double began, double cost);
    void dropBacklog();
    void watchForStall();
    void closeIfStalled();
    void closeIfResting();
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

    std::shared_ptr<MoonshineModel> model_;
    std::optional<MoonshineStream> stream_;
    TranscriptReader reader_;

    // The sound
    HighPass highPass_;
    HumFilter humFilter_;
    std::uint64_t takenSamples_ = 0;
    std::vector<float> recent_; ///< the last seconds of the filtered sound, for a new stream
    bool hasNewSound_ = false;  ///< whether there is sound that no pass has covered

    // The schedule of the passes
    double nextPassAt_ = 0;           ///< host time; with enough new sound, a pass starts earlier
    double lastPassAt_ = 0;           ///< host time of its start
    std::optional<double> passDueAt_; ///< host time for which the next pass is scheduled
    std::uint64_t passRound_ = 0;     ///< counts the scheduled passes; only the latest takes place

    StallWatch stall_;
    LineClosing closing_;
    PassCosts costs_;
};

} // namespace tessarune
