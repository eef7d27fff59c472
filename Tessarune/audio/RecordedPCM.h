#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <string>
#include <vector>

namespace tessarune {

// The form in which a recording keeps sound. Pure functions.

/// Mixes all channels to one. Dividing by the square root of their number keeps the loudness of
/// independent channels.
std::vector<float> downmixed(const AudioBuffer& buffer);

/// Converts samples from -1 to 1 to little-endian 16-bit integers. Clips samples beyond this range;
/// NaN becomes 0.
std::string pcmS16LEData(const std::vector<float>& mono);

} // namespace tessarune
