#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One complete result of the recogniser, for diagnostics of the recogniser itself. Large, so built
/// on request only.
struct AppleSpeechAnalyzerRawResultRecord {
    /// One field of the result, as text.
    struct MirrorChild {
        std::string label;
        std::string type;
        std::string valuePreview;

        bool operator==(const MirrorChild&) const = default;
    };

    struct Run {
        std::int64_t index = 0;
        std::string text;
        std::int64_t characterStart = 0; ///< in the result's text
        std::int64_t characterEnd = 0;
        std::int64_t characterCount = 0;
        std::int64_t utf8Count = 0;
        std::int64_t wordCount = 0;
        bool hasConfidence = false;
        std::optional<double> confidence;
        bool hasAudioTimeRange = false;
        std::optional<double> audioStartSeconds;
        std::optional<double> audioEndSeconds;
        std::optional<double> audioDurationSeconds;
        /// The same times in whole milliseconds: the value, divided by the scale, is in seconds.
        std::optional<std::int64_t> audioStartCMTimeValue;
        std::optional<std::int64_t> audioStartCMTimeScale;
        std::optional<std::int64_t> audioEndCMTimeValue;
        std::optional<std::int64_t> audioEndCMTimeScale;
        std::optional<std::int64_t> audioDurationCMTimeValue;
        std::optional<std::int64_t> audioDurationCMTimeScale;
        std::optional<double> mappedStartEpochSeconds;
        std::optional<double> mappedEndEpochSeconds;
        std::string debugDescription;

        bool operator==(const Run&) const = default;
    };

    struct Alternative {
        std::int64_t index = 0;
        std::string text;
        std::int64_t characterCount = 0;
        std::int64_t wordCount = 0;
        std::int64_t runCount = 0;
        std::int64_t timedRunCount = 0;
        std::vector<Run> runs;

        bool operator==(const Alternative&) const = default;
    };

    struct EngineState {
        std::int64_t generation = 0;
        double audioEpochSeconds = 0;
        double latestAudioTimeSeconds = 0;
        double segmentStartEpochSeconds = 0;
        std::int64_t revisionBeforeTessaruneProcessing = 0;
        bool pendingPartialBeforeTessaruneProcessing = false;
        double partialCoalesceWindowSeconds = 0;
        double analyzerInputChunkSeconds = 0;

        bool operator==(const EngineState&) const = default;
    };

    std::int64_t schemaVersion = 1;
    std::string kind = "appleSpeechAnalyzerRawResult";
    std::int64_t sequence = 0;
    double receivedAt = 0; ///< seconds since 1970
    std::string localeIdentifier;
    std::string resultType;
    std::string resultDebugDescription;
    std::vector<MirrorChild> resultMirrorChildren;
    std::string textType;
    std::string textDebugDescription;
    bool isFinal = false;
    std::string text; ///< not trimmed
    std::int64_t characterCount = 0;
    std::int64_t utf8Count = 0;
    std::int64_t wordCount = 0;
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0;
    std::vector<Run> runs;
    std::int64_t alternativeCount = 0;
    std::vector<Alternative> alternatives;
    EngineState engineState;
    std::vector<std::string> requestedSpeechOptions;
    std::string note;

    bool operator==(const AppleSpeechAnalyzerRawResultRecord&) const = default;
};

/// The serialised form: each field under its own name, absent values left out.
void to_json(nlohmann::ordered_json& json, const AppleSpeechAnalyzerRawResultRecord& record);

} // namespace tessarune
