#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/speech/SpeechFileAnalyzer.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/AsyncStream.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>

namespace tessarune {

/// One batch of sound for the engine, in the engine's format.
struct AnalyzerInput {
    AudioBufferPtr buffer;
};

/// Interface: the half of the on-device recogniser that takes sound. Times are seconds of the sound
/// fed since `start`, counted from 0.
///
/// Operations may run concurrently and may be called from any executor; each resumes on the main
/// queue. A failure is an exception derived from std::exception with a text for the user.
class SpeechAnalyzer {
  public:
    virtual ~SpeechAnalyzer() = default;

    /// The format that the input must have.
    virtual AudioFormat bestAvailableAudioFormat() const = 0;

    /// Loads the model and warms it up, so that the first words come without delay.
    virtual Task<void> prepareToAnalyze(AudioFormat format) = 0;

    /// The executor on which the analyzer reads its input. Pass it to the stream for `start`.
    virtual Executor inputExecutor() const = 0;

    /// Begins to read the input. Returns once the engine runs; results go to the transcriber.
    virtual Task<void> start(AsyncStream<AnalyzerInput> inputSequence) = 0;

    /// Asks for final results up to an audio time.
    virtual Task<void> finalize(double through) = 0;

    /// Allows the analyzer to forget the sound before an audio time, to free memory.
    virtual Task<void> cancelAnalysis(double before) = 0;

    /// Waits until all input is read and all results are delivered, then ends the results.
    virtual Task<void> finalizeAndFinishThroughEndOfInput() = 0;

    /// Ends the results at once; unrecognised sound is lost.
    virtual Task<void> cancelAndFinishNow() = 0;
};

/// The recogniser of this computer: functions that make the parts of a session. A transcriber
/// delivers its `results` on `resultsExecutor`.
struct SpeechEngine {
    std::function<std::shared_ptr<SpeechTranscriber>(SpeechTranscriberOptions,
                                                     Executor resultsExecutor)>
        makeTranscriber;
    /// An analyzer for this transcriber, with the highest priority and a model that stays loaded
    /// for the life of the process.
    std::function<std::shared_ptr<SpeechAnalyzer>(std::shared_ptr<SpeechTranscriber>)> makeAnalyzer;
    /// Seconds of sound that the running analyzer has taken but not processed: its delay. Any
    /// thread.
    std::function<double()> unheardSeconds = [] { return 0.0; };
    /// An analyzer for one recording, with its own model. `model` is the model's name, or
    /// "automatic" for the best installed model that fits this computer. The function is null if
    /// the engine has no file mode.
    std::function<std::shared_ptr<SpeechFileAnalyzer>(SpeechTranscriberOptions, std::string model)>
        makeFileAnalyzer = nullptr;
};

} // namespace tessarune
