#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <vector>

namespace tessarune::testing {

/// The frequency that marks a second of a recording, far enough from those of other seconds to be
/// distinguished.
inline double toneOfSecond(int second) {
    return 400.0 + 150.0 * second;
}

inline AudioBufferPtr tone(double frequency, double seconds, AudioFormat format) {
    auto buffer = std::make_shared<AudioBuffer>();
    buffer->format = format;
    const auto frames = static_cast<std::size_t>(seconds * format.sampleRate);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double phase =
            2 * std::numbers::pi * frequency * static_cast<double>(frame) / format.sampleRate;
        for (int channel = 0; channel < format.channels; ++channel)
            buffer->samples.push_back(static_cast<float>(0.5 * std::sin(phase)));
    }
    return buffer;
}

/// The amplitude of a frequency in a stretch of one channel: 0.5 for a tone of amplitude 0.5.
inline double strength(const std::vector<float>& sound, std::size_t from, std::size_t count,
                       double frequency, double sampleRate) {
    double real = 0;
    double imaginary = 0;
    for (std::size_t i = 0; i < count && from + i < sound.size(); ++i) {
        const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate;
        real += sound[from + i] * std::cos(phase);
        imaginary += sound[from + i] * std::sin(phase);
    }
    return 2 * std::hypot(real, imaginary) / static_cast<double>(count);
}

/// For each hundredth of a second of `sound`: the seconds whose tones are heard in it.
inline std::vector<int> secondsHeard(const std::vector<float>& sound, double sampleRate,
                                     int seconds) {
    std::vector<int> heard;
    const auto window = static_cast<std::size_t>(sampleRate / 100);
    for (std::size_t at = 0; at + window <= sound.size(); at += window) {
        for (int second = 0; second < seconds; ++second) {
            if (strength(sound, at, window, toneOfSecond(second), sampleRate) > 0.3)
                heard.push_back(second);
        }
    }
    return heard;
}

/// The index of the first sample that is not silent.
inline std::size_t onset(const std::vector<float>& sound) {
    std::size_t at = 0;
    while (at < sound.size() && std::abs(sound[at]) < 0.01F)
        ++at;
    return at;
}

} // namespace tessarune::testing
