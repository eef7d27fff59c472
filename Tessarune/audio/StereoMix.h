#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <vector>

namespace tessarune {

/// Mixes a stream of stereo sound to one channel: the mean of both. Where the channels are in
/// opposite phase, as in a recording with one channel wired the wrong way, the mean is silent, and
/// the left channel is taken instead. One thread at a time.
class StereoMix {
  public:
    /// `stereo` has two channels; the result has a sample for each of its frames.
    std::vector<float> mixed(const AudioBuffer& stereo);

  private:
    bool takesLeft_ = false;
    // Sums of squared samples; older samples weigh less.
    double mixEnergy_ = 0;
    double channelEnergy_ = 0; ///< mean of both channels
};

} // namespace tessarune
