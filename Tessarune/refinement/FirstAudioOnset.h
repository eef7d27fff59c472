#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <cstddef>
#include <optional>

namespace tessarune {

/// Finds when a recording is first loud: at the start of the first 50 ms block whose root mean
/// square over all channels reaches the threshold. Gets the sound while the recording is read. One
/// thread.
class FirstAudioOnset {
  public:
    /// Sound after `maxScanSeconds` is ignored.
    explicit FirstAudioOnset(AudioFormat format, float rmsThreshold = 0.012F,
                             double maxScanSeconds = 30);

    /// Adds the next sound of the recording.
    void hear(const AudioBuffer& sound);
    /// Ends the sound; an incomplete last block counts too.
    void finish();

    /// The start of the first loud block, in seconds; 0 if the recording never reaches the
    /// threshold.
    double seconds() const { return onset_.value_or(0); }

  private:
    void endBlock();

    const AudioFormat format_;
    const float threshold_;
    const std::size_t blockFrames_;
    const std::size_t maximumFrames_;
    std::size_t heardFrames_ = 0; ///< in complete blocks
    std::size_t openFrames_ = 0;
    double openSquares_ = 0;
    std::optional<double> onset_;
};

} // namespace tessarune
