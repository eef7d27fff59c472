#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// Implements `MakeTempoChanger` with FFmpeg's filter `atempo`. Throws AudioConversionError for
/// unsupported formats and rates.
std::unique_ptr<AudioConverter> makeAtempoConverter(AudioFormat format, double rate);

} // namespace tessarune
