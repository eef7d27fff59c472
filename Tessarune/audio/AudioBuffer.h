#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace tessarune {

/// The layout of samples: always interleaved 32-bit floats from -1 to 1.
struct AudioFormat {
    double sampleRate = 0; ///< frames per second
    int channels = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// A stretch of sound. Immutable once it is shared, so that the recorder, the recogniser and the
/// level meter read the same memory without copies.
struct AudioBuffer {
    AudioFormat format;
    std::vector<float> samples; ///< frames × channels, interleaved

    std::size_t frames() const {
        return format.channels > 0 ? samples.size() / static_cast<std::size_t>(format.channels) : 0;
    }
    double seconds() const {
        return format.sampleRate > 0 ? static_cast<double>(frames()) / format.sampleRate : 0;
    }
};

using AudioBufferPtr = std::shared_ptr<const AudioBuffer>;

} // namespace tessarune
