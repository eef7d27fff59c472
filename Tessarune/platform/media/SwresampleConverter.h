#pragma once

#include "Tessarune/audio/AudioConverter.h"

namespace tessarune {

/// Makes a converter that uses libswresample; a `MakeAudioConverter`. Throws AudioConversionError
/// for unsupported formats.
std::unique_ptr<AudioConverter> makeSwresampleConverter(AudioFormat from, AudioFormat to);

} // namespace tessarune
