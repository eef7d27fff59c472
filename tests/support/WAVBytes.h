#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A RIFF file of 16-bit PCM as bytes. `dataSize` replaces the true size in the header, as in a
/// truncated file or one with a wrong header.
inline std::string wavBytes(const std::vector<std::int16_t>& samples, int sampleRate,
                            int channels = 1, std::uint32_t dataSize = 0) {
    const auto size = dataSize ? dataSize : static_cast<std::uint32_t>(samples.size() * 2);
    std::string bytes;
    const auto number = [&](std::uint32_t value, int width) {
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    };
    bytes += "RIFF";
    number(size + 36, 4);
    bytes += "WAVEfmt ";
    number(16, 4);
    number(1, 2);
    number(static_cast<std::uint32_t>(channels), 2);
    number(static_cast<std::uint32_t>(sampleRate), 4);
    number(static_cast<std::uint32_t>(sampleRate * channels * 2), 4);
    number(static_cast<std::uint32_t>(channels * 2), 2);
    number(16, 2);
    bytes += "data";
    number(size, 4);
    for (const auto sample : samples)
        number(static_cast<std::uint16_t>(sample), 2);
    return bytes;
}

/// A tone at half of full scale, the same on every channel.
inline std::vector<std::int16_t> tone(double seconds, int sampleRate, double hertz = 440,
                                      int channels = 1) {
    std::vector<std::int16_t> samples;
    const auto frames = static_cast<std::size_t>(seconds * sampleRate);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / sampleRate;
        samples.insert(samples.end(), static_cast<std::size_t>(channels),
                       static_cast<std::int16_t>(16384 * std::sin(phase)));
    }
    return samples;
}

} // namespace tessarune::testing
