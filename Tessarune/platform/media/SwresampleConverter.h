#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// Implements `MakeAudioConverter` with libswresample. Throws AudioConversionError for unsupported
/// formats.
std::unique_ptr<AudioConverter> makeSwresampleConverter(AudioFormat from, AudioFormat to);

} // namespace tessarune
