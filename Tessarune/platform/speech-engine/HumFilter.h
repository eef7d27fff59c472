#pragma once

#include <cstddef>
#include <vector>

namespace tessarune {

/// Removes mains hum at 50 or 60 Hz, with its harmonics. Begins when hum is heard alone, as in a
/// pause, and stops after pauses without hum. At other times, sound passes unchanged, because the
/// filter would damage voices a little. The filter keeps a history, so use one per stream. One
/// thread at a time.
class HumFilter {
  public:
    explicit HumFilter(double sampleRate);

    /// Filters the sound that follows the sound of the previous call.
    std::vector<float> filtered(std::vector<float> samples);

  private:
    /// A comb filter: attenuates narrow bands around all multiples of the frequency whose period is
    /// the delay.
    class Comb {
      public:
        Comb(std::size_t delay, double feedback);
        /// `before` is the sample one delay before `sample`.
        float next(float sample, float before);

      private:
        double feedback_;
        std::vector<double> outputs_;
        std::size_t place_ = 0;
    };

    /// How closely the sound of a block repeats the sound that came `delay` samples earlier.
    struct Likeness {
        std::size_t delay;
        double product = 0; ///< sum over the block: each sample times the earlier one
        double energy = 0;  ///< of the earlier sound
    };

    float before(std::size_t delay) const;
    void listen(float sample);
    void judgeBlock();
    double likeness(const Likeness& of) const;

    std::size_t blockLength_;
    std::vector<float> past_; ///< the last `blockLength_` samples, as a ring
    std::size_t place_ = 0;
    double energy_ = 0; ///< of the current block
    Likeness byBlock_;  ///< its delay is one block: whole periods of both frequencies
    Likeness by50_;
    Likeness by60_;
    Comb comb50_;
    Comb comb60_;
    double loudest_ = 0;  ///< energy of the loudest block; fades with time
    int humBlocks_ = 0;   ///< blocks with hum in a row
    int clearBlocks_ = 0; ///< pauses without hum since the last block with hum
    enum class Mains { none, hertz50, hertz60 } heard_ = Mains::none;
};

} // namespace tessarune
