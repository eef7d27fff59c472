#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// A converter on libswresample; a `MakeAudioConverter`. Throws AudioConversionError for formats
/// that it cannot convert.
std::unique_ptr<AudioConverter> makeSwresampleConverter(AudioFormat from, AudioFormat to);

} // namespace tessarune
