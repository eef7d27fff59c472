#pragma once

#include <span>
#include <vector>

namespace tessarune {

/// Removes what is below a frequency: a second-order Butterworth filter, 12 dB an octave. It keeps
/// a history, so use one filter per stream. One thread at a time.
class HighPass {
  public:
    /// Both in hertz; `cutoff` loses 3 dB. 0 changes no sound.
    HighPass(double cutoff, double sampleRate);

    /// Filters the sound that follows the previous call's.
    std::vector<float> filtered(std::span<const float> samples);

  private:
    double gain_;
    double feedback1_;
    double feedback2_;
    double state1_ = 0;
    double state2_ = 0;
};

} // namespace tessarune
