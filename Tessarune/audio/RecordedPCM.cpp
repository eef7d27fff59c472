#include "Tessarune/audio/RecordedPCM.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tessarune {

std::vector<float> downmixed(const AudioBuffer& buffer) {
    const auto channels = static_cast<std::size_t>(std::max(buffer.format.channels, 0));
    std::vector<float> mono(buffer.frames());
    const float scale = 1.0F / std::sqrt(static_cast<float>(channels));
    for (std::size_t frame = 0; frame < mono.size(); ++frame) {
        float sum = 0;
        for (std::size_t channel = 0; channel < channels; ++channel)
            sum += buffer.samples[frame * channels + channel];
        mono[frame] = sum * scale;
    }
    return mono;
}

std::string pcmS16LEData(const std::vector<float>& mono) {
    constexpr float fullScale = 32767;
    std::string pcm;
    pcm.reserve(mono.size() * sizeof(std::int16_t));
    for (const float sample : mono) {
        const float clamped = std::isnan(sample) ? 0.0F : std::clamp(sample, -1.0F, 1.0F);
        const auto value = static_cast<std::int16_t>(std::lround(clamped * fullScale));
        pcm += static_cast<char>(value & 0xFF);
        pcm += static_cast<char>(value >> 8 & 0xFF);
    }
    return pcm;
}

} // namespace tessarune
