#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace tessarune {

/// Thrown for sound that cannot be converted, with a text for the user.
class AudioConversionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Interface: converts a stream of sound to another sample rate and number of channels. Its filter
/// keeps a history between buffers, so use one converter per stream. A result may be a little
/// shorter or longer than its input.
///
/// Used by one thread at a time. Operations throw AudioConversionError; after that, the converter
/// is unusable.
class AudioConverter {
  public:
    virtual ~AudioConverter() = default;

    virtual AudioFormat outputFormat() const = 0;

    /// Converts a buffer of the input format. The result may be empty while the filter fills.
    virtual AudioBuffer convert(const AudioBuffer& input) = 0;

    /// Returns the remaining output of the filter, at the end of the stream.
    virtual AudioBuffer flush() = 0;
};

/// Makes a converter. Throws AudioConversionError for formats that cannot be converted.
using MakeAudioConverter =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat from, AudioFormat to)>;

/// Makes a converter that keeps the format and changes the speed by `rate`, from 0.5 to 3: at 2,
/// the output is half as long, and voices keep their pitch. After `flush`, the length of the output
/// is about that of the input divided by the rate.
using MakeTempoChanger =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat format, double rate)>;

} // namespace tessarune
