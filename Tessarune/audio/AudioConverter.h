#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace tessarune {

/// Sound that cannot be converted. The text can be shown.
class AudioConversionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Seam: converts a stream of sound to another sample rate and number of channels. Its filter keeps
/// a history between buffers, so use one converter per stream, and a result may be a little shorter
/// or longer than its input.
///
/// Used by one thread at a time. Operations throw AudioConversionError; the converter is unusable
/// after that.
class AudioConverter {
  public:
    virtual ~AudioConverter() = default;

    virtual AudioFormat outputFormat() const = 0;

    /// Converts a buffer of the input format. The result may be empty while the filter fills.
    virtual AudioBuffer convert(const AudioBuffer& input) = 0;

    /// The remaining output of the filter, at the end of the stream.
    virtual AudioBuffer flush() = 0;
};

/// Makes a converter. Throws AudioConversionError for formats that cannot be converted.
using MakeAudioConverter =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat from, AudioFormat to)>;

/// Makes a converter that keeps the format and changes the speed: at a `rate` of 2 the output is
/// half as long, and voices keep their pitch. From 0.5 to 3. `flush` brings the output to the
/// length of the input divided by the rate.
using MakeTempoChanger =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat format, double rate)>;

} // namespace tessarune
