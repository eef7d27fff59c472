#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// A short form of a recogniser's result: counts, times, a hash and a preview in place of the text.
/// Audio times are seconds from the start of the sound that was fed, or of the recording.
struct SpeechResultSummary {
    std::int64_t sequence = 0; ///< counted from 1
    double receivedAt = 0;     ///< seconds since 1970
    std::string localeIdentifier;
    bool isFinal = false;
    std::int64_t characterCount = 0;
    std::int64_t utf8Count = 0;
    std::int64_t wordCount = 0;
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0;
    std::optional<double> audioStartSeconds;
    std::optional<double> audioEndSeconds;
    std::optional<double> audioDurationSeconds;
    std::string textHash;
    std::string textPreview;
    std::vector<std::string> requestedSpeechOptions;

    bool operator==(const SpeechResultSummary&) const = default;
};

/// The serialised form: each field under its own name, absent values left out.
void to_json(nlohmann::ordered_json& json, const SpeechResultSummary& summary);

} // namespace tessarune
