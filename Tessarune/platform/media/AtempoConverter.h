#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// A converter on FFmpeg's filter `atempo`; a `MakeTempoChanger`. Throws AudioConversionError for
/// formats and rates that it cannot work with.
std::unique_ptr<AudioConverter> makeAtempoConverter(AudioFormat format, double rate);

} // namespace tessarune
