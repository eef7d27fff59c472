#pragma once

#include <span>
#include <vector>

namespace tessarune {

/// Removes sound below a frequency: a second-order Butterworth filter, 12 dB per octave. It keeps a
/// history, so use one filter per stream. One thread at a time.
class HighPass {
  public:
    /// Both in hertz; `cutoff` is attenuated by 3 dB. A cutoff of 0 changes nothing.
    HighPass(double cutoff, double sampleRate);

    /// Filters the sound that follows the sound of the previous call.
    std::vector<float> filtered(std::span<const float> samples);

  private:
    double gain_;
    double feedback1_;
    double feedback2_;
    double state1_ = 0;
    double state2_ = 0;
};

} // namespace tessarune
