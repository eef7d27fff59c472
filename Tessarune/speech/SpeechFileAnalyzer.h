#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/Task.h"

#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// Interface: the on-device recogniser in file mode. The caller passes the sound of a recording in
/// blocks, at its own pace. Within a block, the recogniser may use later sound to recognise earlier
/// words. The recogniser runs at a lower priority than everything that the user waits for. Times
/// are seconds of the recording, counted from 0.
///
/// The operations are awaited one at a time and resume on the main queue. A failure is an exception
/// derived from std::exception with a text for the user; after it the analyzer is unusable.
class SpeechFileAnalyzer {
  public:
    virtual ~SpeechFileAnalyzer() = default;

    /// The format that `analyze` expects.
    virtual AudioFormat audioFormat() const = 0;

    /// A reported time may be later than its word, by at most this many seconds; never earlier.
    virtual double mostLateness() const = 0;

    /// Loads the model and returns its name.
    virtual Task<std::string> prepare() = 0;

    /// Analyzes the next sound and returns the results that it completes. A stop request ends the
    /// call before the end of the block.
    virtual Task<std::vector<SpeechResult>> analyze(AudioBufferPtr block, std::stop_token stop) = 0;

    /// Declares that no more sound follows, and returns the remaining results.
    virtual Task<std::vector<SpeechResult>> finish() = 0;
};

} // namespace tessarune
