#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A recording of one channel.
struct Recording {
    std::vector<float> samples;
    int sampleRate = 0;

    double seconds() const { return static_cast<double>(samples.size()) / sampleRate; }
};

/// A WAV file of 16-bit samples, one channel: the shipped sample speech.
inline Recording readRecording(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    const auto number = [&]<typename T>(std::size_t at, T value) {
        std::memcpy(&value, bytes.data() + at, sizeof value);
        return value;
    };
    Recording recording;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const auto size = number(at + 4, std::uint32_t{});
        const std::size_t body = at + 8;
        if (bytes.compare(at, 4, "fmt ") == 0)
            recording.sampleRate = number(body + 4, std::int32_t{});
        if (bytes.compare(at, 4, "data") == 0) {
            for (std::size_t i = body; i + 2 <= std::min(bytes.size(), body + size); i += 2)
                recording.samples.push_back(static_cast<float>(number(i, std::int16_t{})) / 32768);
        }
        at = body + size + size % 2;
    }
    if (recording.samples.empty() || recording.sampleRate == 0)
        throw std::runtime_error("no recording: " + path.string());
    return recording;
}

/// The recording at a rate that divides its own, through a windowed low-pass filter.
inline Recording decimated(const Recording& recording, int sampleRate) {
    const int factor = recording.sampleRate / sampleRate;
    if (factor * sampleRate != recording.sampleRate)
        throw std::invalid_argument("no whole factor");
    if (factor == 1)
        return recording;
    const int reach = 16 * factor;
    std::vector<double> filter;
    for (int i = -reach; i <= reach; ++i) {
        const double x = 0.9 * i / factor;
        const double sinc = i == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
        filter.push_back(sinc * 0.9 / factor * 0.5 *
                         (1 + std::cos(std::numbers::pi * i / (reach + 1))));
    }
    Recording result{{}, sampleRate};
    const auto count = static_cast<std::ptrdiff_t>(recording.samples.size());
    for (std::ptrdiff_t at = 0; at < count; at += factor) {
        double sum = 0;
        for (int i = -reach; i <= reach; ++i) {
            if (at + i >= 0 && at + i < count)
                sum += filter[static_cast<std::size_t>(i + reach)] *
                       static_cast<double>(recording.samples[static_cast<std::size_t>(at + i)]);
        }
        result.samples.push_back(static_cast<float>(sum));
    }
    return result;
}

} // namespace tessarune::testing
