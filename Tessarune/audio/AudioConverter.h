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

/// Seam: turns a stream of sound of one format into another sample rate and number of channels. It
/// keeps what its filter needs between two buffers, so one converter serves one stream, and a
/// buffer may come out a little shorter or longer than it went in.
///
/// Used by one thread at a time. Operations throw AudioConversionError; the converter is useless
/// after that.
class AudioConverter {
  public:
    virtual ~AudioConverter() = default;

    virtual AudioFormat outputFormat() const = 0;

    /// Converts a buffer of the input format. The result may be empty while the filter fills.
    virtual AudioBuffer convert(const AudioBuffer& input) = 0;

    /// What the filter still holds, at the end of the stream.
    virtual AudioBuffer flush() = 0;
};

/// Makes a converter. Throws where `convert` would: for formats that cannot be converted.
using MakeAudioConverter =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat from, AudioFormat to)>;

/// Makes a converter that keeps the format and changes how fast the sound goes: at a `rate` of 2
/// half as much comes out as goes in, and voices keep their pitch. From 0.5 to 3. What `flush`
/// gives brings the output to the length of the input divided by the rate.
using MakeTempoChanger =
    std::function<std::unique_ptr<AudioConverter>(AudioFormat format, double rate)>;

} // namespace tessarune
