#pragma once

#include <span>
#include <vector>

namespace tessarune {

/// Takes away what is below a frequency: a Butterworth filter of second order, 12 dB an octave. It
/// remembers the sound that it has heard, so one filter is for one stream. One thread at a time.
class HighPass {
  public:
    /// Both in hertz; `cutoff` loses 3 dB. 0 changes no sound.
    HighPass(double cutoff, double sampleRate);

    /// The sound that follows what was filtered before.
    std::vector<float> filtered(std::span<const float> samples);

  private:
    double gain_;
    double feedback1_;
    double feedback2_;
    double state1_ = 0;
    double state2_ = 0;
};

} // namespace tessarune
