#pragma once

#include "Tessarune/platform/speech-engine/MoonshineModel.h"

#include <array>
#include <cstddef>
#include <span>

namespace tessarune {

/// Distinguishes a short rest between words from the words, by comparing the loudness with the
/// quietest sound of the last seconds. Takes sound of `speechSampleRate`. One thread at a time.
class QuietDetector {
  public:
    void hear(std::span<const float> samples);

    /// Whether the last 60 ms were quiet.
    bool isQuiet() const;

  private:
    static constexpr std::size_t frameLength = speechSampleRate / 50; ///< samples; 20 ms
    static constexpr std::size_t framesThatCount = 3;

    void endFrame();

    double frameEnergy_ = 0; ///< sum of squares of the unfinished frame
    std::size_t frameFill_ = 0;
    std::array<double, framesThatCount> energies_{}; ///< of the last frames, as a ring
    std::size_t framesHeard_ = 0;
    double floor_ = 0.01; ///< loudness of a rest, as a root mean square
};

} // namespace tessarune
