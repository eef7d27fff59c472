#include "Tessarune/platform/speech-engine/QuietDetector.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessarune {

namespace {

/// Sound is quiet if it is less loud than the floor times this factor.
constexpr double quietFactor = 2;
/// The lower limit of the floor: after a silent track, a whisper must not count as loud.
constexpr double lowestFloor = 0.001;
/// The maximum growth of the floor per frame: it doubles in 1.4 s, to follow surroundings that have
/// become louder.
constexpr double floorRise = 1.01;

} // namespace

void QuietDetector::hear(std::span<const float> samples) {
    for (const float sample : samples) {
        frameEnergy_ += static_cast<double>(sample) * static_cast<double>(sample);
        if (++frameFill_ == frameLength)
            endFrame();
    }
}

void QuietDetector::endFrame() {
    const double loudness = std::sqrt(frameEnergy_ / static_cast<double>(frameLength));
    floor_ = std::max(std::min(loudness, floor_ * floorRise), lowestFloor);
    energies_[framesHeard_++ % framesThatCount] = frameEnergy_;
    frameEnergy_ = 0;
    frameFill_ = 0;
}

bool QuietDetector::isQuiet() const {
    if (framesHeard_ < framesThatCount)
        return false;
    const double energy = std::accumulate(energies_.begin(), energies_.end(), 0.0);
    const double loudness = std::sqrt(energy / static_cast<double>(frameLength * framesThatCount));
    return loudness < quietFactor * floor_;
}

} // namespace tessarune
