#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/speech/SpeechFileAnalyzer.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/AsyncStream.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>

namespace tessarune {

/// One batch of sound on its way to the engine, in the engine's format.
struct AnalyzerInput {
    AudioBufferPtr buffer;
};

/// Seam: the half of the on-device recogniser that takes sound. Times are seconds of the sound that
/// was fed since `start`, counted from 0.
///
/// The operations are awaited one at a time or side by side, from any executor; each goes on on the
/// main queue. A failure is an exception derived from std::exception whose text can be shown.
class SpeechAnalyzer {
  public:
    virtual ~SpeechAnalyzer() = default;

    /// The format to feed.
    virtual AudioFormat bestAvailableAudioFormat() const = 0;

    /// Loads the model and warms it up, so that the first words come without delay.
    virtual Task<void> prepareToAnalyze(AudioFormat format) = 0;

    /// Where the analyzer reads its input; the stream given to `start` must be made with it.
    virtual Executor inputExecutor() const = 0;

    /// Begins to read the input. Returns once the engine runs; results go to the transcriber.
    virtual Task<void> start(AsyncStream<AnalyzerInput> inputSequence) = 0;

    /// Asks for final results up to an audio time.
    virtual Task<void> finalize(double through) = 0;

    /// Gives up on sound before an audio time, which frees what the engine holds for it.
    virtual Task<void> cancelAnalysis(double before) = 0;

    /// Waits until all input has been read and all results are given, then ends the results.
    virtual Task<void> finalizeAndFinishThroughEndOfInput() = 0;

    /// Ends the results at once; what has not been recognised is lost.
    virtual Task<void> cancelAndFinishNow() = 0;
};

/// The recogniser of this computer, as values and functions, so that a session can make what it
/// needs. `results` of a transcriber made here are delivered on `resultsExecutor`.
struct SpeechEngine {
    std::function<std::shared_ptr<SpeechTranscriber>(SpeechTranscriberOptions,
                                                     Executor resultsExecutor)>
        makeTranscriber;
    /// An analyzer that works for this transcriber, of the highest priority, its model kept for the
    /// life of the process.
    std::function<std::shared_ptr<SpeechAnalyzer>(std::shared_ptr<SpeechTranscriber>)> makeAnalyzer;
    /// Seconds of sound that the running analyzer has taken and not looked at yet: how far it is
    /// behind. Any thread.
    std::function<double()> unheardSeconds = [] { return 0.0; };
    /// An analyzer of one recording, with a model of its own: "automatic" for the best one that is
    /// here and fits this computer, or a name. Null where the engine has no file mode.
    std::function<std::shared_ptr<SpeechFileAnalyzer>(SpeechTranscriberOptions, std::string model)>
        makeFileAnalyzer = nullptr;
};

} // namespace tessarune
