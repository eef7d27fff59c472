#pragma once

#include "Tessarune/audio/AudioBuffer.h"

namespace tessarune::AudioLevel {

/// A level is worth computing a few times a second, not with each buffer.
constexpr int buffersPerLevel = 8;

/// The root mean square over all channels and frames: 0 for an empty buffer, 1 for full scale.
double rms(const AudioBuffer& buffer);

} // namespace tessarune::AudioLevel
