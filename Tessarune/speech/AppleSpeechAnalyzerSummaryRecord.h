#pragma once

#include "Tessarune/speech/SpeechResultSummary.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// A short record of one result of the live recogniser, for the diagnostics of long sessions.
struct AppleSpeechAnalyzerSummaryRecord : SpeechResultSummary {
    std::int64_t schemaVersion = 1;
    std::string kind = "appleSpeechAnalyzerSummary";
    std::int64_t confidenceRunCount = 0; ///< pieces of the text that have a confidence
    std::optional<double> minConfidence;
    std::optional<double> avgConfidence;
    std::int64_t alternativeCount = 0;
    /// The result's audio times, converted to seconds since 1970.
    std::optional<double> mappedStartEpochSeconds;
    std::optional<double> mappedEndEpochSeconds;
    double latestAudioTimeSeconds = 0;
    // The transcriber's state before it processed the result.
    std::int64_t revisionBeforeTessaruneProcessing = 0;
    bool pendingPartialBeforeTessaruneProcessing = false;

    bool operator==(const AppleSpeechAnalyzerSummaryRecord&) const = default;
};

void to_json(nlohmann::ordered_json& json, const AppleSpeechAnalyzerSummaryRecord& record);

} // namespace tessarune
