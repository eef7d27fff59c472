#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// Makes a converter that uses FFmpeg's filter `atempo`; a `MakeTempoChanger`. Throws
/// AudioConversionError for unsupported formats and rates.
std::unique_ptr<AudioConverter> makeAtempoConverter(AudioFormat format, double rate);

} // namespace tessarune
