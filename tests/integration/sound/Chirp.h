#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/audio/MediaFile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <optional>
#include <vector>

namespace tessarune::testing {

/// Sound with a linearly rising pitch, so that any 10 ms of it reveal their position, even if it is
/// played faster or slower with unchanged pitch.
struct Chirp {
    static constexpr double lowest = 400;        ///< Hz
    static constexpr double risePerSecond = 300; ///< Hz
    static constexpr double seconds = 8;
    static constexpr double amplitude =
        0.1414; ///< -20 dB, the common playback level, so playback applies no gain

    static float at(double time) {
        const double turns = time * (lowest + risePerSecond * time / 2);
        return static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * turns));
    }
    /// The position, in seconds, at which the pitch is `frequency`.
    static double placeOf(double frequency) { return (frequency - lowest) / risePerSecond; }
};

class ChirpFile final : public MediaFile {
  public:
    AudioFormat format() const override { return {16000, 1}; }
    std::optional<double> duration() const override { return Chirp::seconds; }
    AudioBufferPtr read() override {
        constexpr std::size_t most = 1024;
        auto block = std::make_shared<AudioBuffer>(AudioBuffer{format(), {}});
        const auto frames = static_cast<std::size_t>(Chirp::seconds * format().sampleRate);
        for (const std::size_t end = std::min(next_ + most, frames); next_ < end; ++next_)
            block->samples.push_back(Chirp::at(static_cast<double>(next_) / format().sampleRate));
        return block->samples.empty() ? nullptr : block;
    }
    void seek(double place) override {
        next_ = static_cast<std::size_t>(std::llround(place * format().sampleRate));
    }

  private:
    std::size_t next_ = 0;
};

/// The amplitude of one channel: 0.5 for a tone of amplitude 0.5.
inline double amplitudeOf(const std::vector<float>& sound) {
    double sum = 0;
    for (const float sample : sound)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sound.empty() ? 0 : std::sqrt(2 * sum / static_cast<double>(sound.size()));
}

/// The frequency of a tone below 3000 Hz, from the identity
/// x[i - n] + x[i + n] = 2 cos(phase of n samples) x[i].
inline double frequencyOf(const std::vector<float>& sound, double sampleRate) {
    constexpr double highest = 3000;
    const auto apart = static_cast<std::size_t>(sampleRate / 2 / highest);
    double products = 0;
    double squares = 0;
    for (std::size_t i = apart; i + apart < sound.size(); ++i) {
        const auto here = static_cast<double>(sound[i]);
        products += here * static_cast<double>(sound[i - apart] + sound[i + apart]);
        squares += here * here;
    }
    const double cosine = squares > 0 ? std::clamp(products / squares / 2, -1.0, 1.0) : 1;
    return std::acos(cosine) * sampleRate / (2 * std::numbers::pi * static_cast<double>(apart));
}

} // namespace tessarune::testing
