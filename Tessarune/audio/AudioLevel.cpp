#include "Tessarune/audio/AudioLevel.h"

#include <cmath>

namespace tessarune::AudioLevel {

double rms(const AudioBuffer& buffer) {
    if (buffer.samples.empty())
        return 0;
    double sum = 0;
    for (const float sample : buffer.samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(buffer.samples.size()));
}

} // namespace tessarune::AudioLevel
