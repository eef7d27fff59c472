#pragma once

#include "Tessarune/audio/AudioConverter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tessarune::simulation {

/// Takes the nearest sample of the first channel: no filter, no delay, so that lengths are exact.
class ScriptedAudioConverter final : public AudioConverter {
  public:
    ScriptedAudioConverter(AudioFormat from, AudioFormat to) : from_(from), to_(to) {}

    AudioFormat outputFormat() const override { return to_; }

    AudioBuffer convert(const AudioBuffer& input) override {
        if (input.format != from_)
            throw std::invalid_argument("sound of another format");
        const double ratio = from_.sampleRate / to_.sampleRate;
        AudioBuffer output{to_, {}};
        const auto frames = static_cast<std::size_t>(static_cast<double>(input.frames()) / ratio);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const auto source = static_cast<std::size_t>(static_cast<double>(frame) * ratio);
            const float sample = input.samples[source * static_cast<std::size_t>(from_.channels)];
            output.samples.insert(output.samples.end(), static_cast<std::size_t>(to_.channels),
                                  sample);
        }
        return output;
    }

    AudioBuffer flush() override { return {to_, {}}; }

  private:
    AudioFormat from_;
    AudioFormat to_;
};

/// The converters of a simulated computer: makes them, records the formats, fails on demand.
struct ScriptedAudioConverters {
    std::vector<AudioFormat> made; ///< input formats
    int failures = 0;              ///< how many of the next requests fail

    MakeAudioConverter maker() {
        return [this](AudioFormat from, AudioFormat to) {
            if (failures > 0) {
                --failures;
                throw std::runtime_error("no such conversion");
            }
            made.push_back(from);
            return std::make_unique<ScriptedAudioConverter>(from, to);
        };
    }
};

} // namespace tessarune::simulation
