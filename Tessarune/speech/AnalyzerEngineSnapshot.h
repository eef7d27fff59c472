#pragma once

#include "Tessarune/speech/AudioTimeline.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The state of an engine session at one moment.
struct AnalyzerEngineSnapshot {
    std::int64_t generation = 0;
    double audioEpoch = 0;      ///< host time of audio time 0; 0 before the first sound
    double latestAudioTime = 0; ///< seconds of sound fed so far
    double segmentStart = 0;    ///< host time at which the running utterance began
    std::int64_t revision = 0;  ///< number of partials so far in the running utterance
    std::vector<std::string> requestedSpeechOptions;
    AudioTimeline timeline; ///< the gaps in the sound

    /// The host time of an audio time; valid after the first sound.
    double wallTimeOf(double audioTime) const {
        return audioEpoch + audioTime + timeline.lostBefore(audioTime);
    }
    /// `nullopt` without an audio time, and before the first sound.
    std::optional<double> wallTime(std::optional<double> audioTime) const {
        if (!audioTime || !(audioEpoch > 0))
            return std::nullopt;
        return wallTimeOf(*audioTime);
    }
};

} // namespace tessarune
