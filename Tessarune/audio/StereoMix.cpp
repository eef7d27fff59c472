#include "Tessarune/audio/StereoMix.h"

#include <cmath>
#include <cstddef>

namespace tessarune {

namespace {

/// If the mix's share of the energy is lower than `lostShare`, the left channel is taken instead.
/// If the share is higher than `restoredShare`, the mix is taken again.
constexpr double lostShare = 0.02;
constexpr double restoredShare = 0.1;
/// Short, so that louder sound before speech in opposite phase does not hide its first word.
constexpr double halfLifeSeconds = 0.01;
/// Per frame; quieter sound (-60 dB) does not change the choice.
constexpr double quietEnergy = 1e-6;

} // namespace

std::vector<float> StereoMix::mixed(const AudioBuffer& stereo) {
    std::vector<float> mono(stereo.frames());
    double mixEnergy = 0;
    double channelEnergy = 0;
    for (std::size_t frame = 0; frame < mono.size(); ++frame) {
        const float left = stereo.samples[2 * frame];
        const float right = stereo.samples[2 * frame + 1];
        mono[frame] = (left + right) / 2;
        mixEnergy += mono[frame] * mono[frame];
        channelEnergy += (left * left + right * right) / 2;
    }
    // The comparison is false for NaN, which would never fade out of the sums.
    if (channelEnergy > quietEnergy * static_cast<double>(mono.size())) {
        const double remaining = std::exp2(-stereo.seconds() / halfLifeSeconds);
        mixEnergy_ = mixEnergy_ * remaining + mixEnergy;
        channelEnergy_ = channelEnergy_ * remaining + channelEnergy;
        takesLeft_ = mixEnergy_ < (takesLeft_ ? restoredShare : lostShare) * channelEnergy_;
    }
    for (std::size_t frame = 0; takesLeft_ && frame < mono.size(); ++frame)
        mono[frame] = stereo.samples[2 * frame];
    return mono;
}

} // namespace tessarune
