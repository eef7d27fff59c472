#pragma once

#include "TessaruneCore/host/AsyncStream.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tessarune {

/// A piece of a result's text with the engine's attributes.
struct SpeechRun {
    std::string text;
    /// Seconds from the beginning of the fed sound; for a file, from the beginning of the
    /// recording. Present if the attribute audioTimeRange was requested.
    std::optional<double> audioStart;
    std::optional<double> audioEnd;
    /// 0 to 1. Absent unless the attribute transcriptionConfidence was requested and the engine
    /// gives a confidence.
    std::optional<double> confidence;

    bool operator==(const SpeechRun&) const = default;
};

/// One result of the engine for a stretch of audio: volatile until `isFinal`.
struct SpeechResult {
    std::vector<SpeechRun> runs; ///< in the order of the text
    bool isFinal = false;
    std::vector<std::string> alternatives; ///< best first; the first is the text itself

    std::string text() const {
        std::string all;
        for (const auto& run : runs)
            all += run.text;
        return all;
    }
};

enum class SpeechReportingOption { volatileResults, fastResults, alternativeTranscriptions };
enum class SpeechAttributeOption { audioTimeRange, transcriptionConfidence };

/// The engine's options for one session.
struct SpeechTranscriberOptions {
    std::string localeIdentifier;
    std::set<SpeechReportingOption> reporting;
    std::set<SpeechAttributeOption> attributes;
};

/// Interface: the half of the on-device recogniser that delivers results. It belongs to the session
/// that made it; the session's analyzer produces the results.
class SpeechTranscriber {
  public:
    virtual ~SpeechTranscriber() = default;

    /// The results in order, for one consumer on the executor that the transcriber was made with.
    /// The stream ends when the analyzer has finished; `next` throws the engine's failure.
    virtual AsyncStream<SpeechResult> results() = 0;
};

} // namespace tessarune
