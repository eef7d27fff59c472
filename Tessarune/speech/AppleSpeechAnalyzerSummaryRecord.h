#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One result of the recogniser in short, for the diagnostics of long sessions: counts, times, a
/// hash and a preview in place of the text. Audio times are seconds of the sound that was fed.
struct AppleSpeechAnalyzerSummaryRecord {
    std::int64_t schemaVersion = 1;
    std::string kind = "appleSpeechAnalyzerSummary";
    std::int64_t sequence = 0;
    double receivedAt = 0; ///< seconds since 1970
    std::string localeIdentifier;
    bool isFinal = false;
    std::int64_t characterCount = 0;
    std::int64_t utf8Count = 0;
    std::int64_t wordCount = 0;
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0;
    std::int64_t confidenceRunCount = 0;
    std::optional<double> minConfidence;
    std::optional<double> avgConfidence;
    std::int64_t alternativeCount = 0;
    std::optional<double> audioStartSeconds;
    std::optional<double> audioEndSeconds;
    std::optional<double> audioDurationSeconds;
    std::optional<double> mappedStartEpochSeconds;
    std::optional<double> mappedEndEpochSeconds;
    double latestAudioTimeSeconds = 0;
    std::int64_t revisionBeforeTessaruneProcessing = 0;
    bool pendingPartialBeforeTessaruneProcessing = false;
    std::string textHash;
    std::string textPreview;
    std::vector<std::string> requestedSpeechOptions;

    bool operator==(const AppleSpeechAnalyzerSummaryRecord&) const = default;
};

/// The serialised form: each field under its own name, absent values left out.
void to_json(nlohmann::ordered_json& json, const AppleSpeechAnalyzerSummaryRecord& record);

} // namespace tessarune
