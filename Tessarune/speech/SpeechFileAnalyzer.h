#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/Task.h"

#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// Seam: the on-device recogniser in file mode. It takes the sound of one recording block by block,
/// at the pace of whoever calls, looks ahead within a block, and works behind everything that the
/// user waits for. Times are seconds of the sound that was given, counted from 0.
///
/// The operations are awaited one at a time and resume on the main queue. A failure is an exception
/// derived from std::exception whose text can be shown; the analyzer is useless after that.
class SpeechFileAnalyzer {
  public:
    virtual ~SpeechFileAnalyzer() = default;

    /// The format to give.
    virtual AudioFormat audioFormat() const = 0;

    /// By how many seconds its times may lie behind the sound. They never lie before it.
    virtual double mostLateness() const = 0;

    /// Loads the model and gives its name.
    virtual Task<std::string> prepare() = 0;

    /// Takes the sound that follows, and gives the results that it completes. A request to stop
    /// ends the work soon, in the middle of the block.
    virtual Task<std::vector<SpeechResult>> analyze(AudioBufferPtr block, std::stop_token stop) = 0;

    /// The recording is over: the results of what is left.
    virtual Task<std::vector<SpeechResult>> finish() = 0;
};

} // namespace tessarune
