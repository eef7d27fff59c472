#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One result of the recogniser, as input to the reconciliation. Audio times are seconds of the
/// sound fed in the session.
struct AppleFinalReconcileCandidate {
    std::int64_t sequence = 0; ///< number of the result in the session
    double receivedAt = 0;     ///< seconds since 1970
    bool isFinal = false;
    std::string text;
    std::string textHash;
    std::string textPreview;
    std::int64_t characterCount = 0;
    std::int64_t wordCount = 0; ///< pieces between white space
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0;      ///< runs with an audio time range
    std::int64_t confidenceRunCount = 0; ///< runs with a confidence
    std::optional<double> minConfidence;
    std::optional<double> avgConfidence;
    std::optional<double> audioStartSeconds;
    std::optional<double> audioEndSeconds;
    double latestAudioTimeSeconds = 0; ///< sound fed before the result arrived
    std::vector<std::string> requestedSpeechOptions;

    /// Sets the text and everything derived from it.
    void setText(std::string newText);

    bool operator==(const AppleFinalReconcileCandidate&) const = default;
};

/// Explains what became of a final in the transcript; one per final, for the session's diagnostics.
struct AppleFinalReconcileDecisionRecord {
    enum class Decision { useFinal, useLastPartial, dropSuppressedFinal };

    std::int64_t schemaVersion = 1;
    std::string kind = "appleFinalReconcile";
    std::int64_t sequence = 0;
    double receivedAt = 0;
    Decision decision = Decision::useFinal;
    std::vector<std::string> reasons;
    AppleFinalReconcileCandidate final;
    std::optional<AppleFinalReconcileCandidate> lastPartial;
    std::string outputTextHash;
    std::string outputTextPreview;
    std::int64_t outputCharacterCount = 0;
    std::int64_t outputWordCount = 0;
    std::optional<double> finalLastPartialSimilarity;
    std::optional<double> finalToLastPartialWordRatio;
    bool alternativeTranscriptionsRequested = false;
    bool shouldKeepFinalWordTimings = false;
    /// The audio time up to which the next finals are dropped. For `useLastPartial`, the time that
    /// this decision sets, if any; for `dropSuppressedFinal`, the time that was set before, if any.
    /// Absent for `useFinal`.
    std::optional<double> suppressedFinalsUntilAudioTime;

    bool operator==(const AppleFinalReconcileDecisionRecord&) const = default;
};

std::string_view name(AppleFinalReconcileDecisionRecord::Decision decision);

/// The serialised form: each field under its own name, absent values left out.
void to_json(nlohmann::ordered_json& json, const AppleFinalReconcileCandidate& candidate);
void to_json(nlohmann::ordered_json& json, const AppleFinalReconcileDecisionRecord& record);

/// The decision about one final.
struct AppleFinalReconcileOutcome {
    std::string text; ///< the text for the transcript; empty if there is none
    std::optional<double> selectedAudioStartSeconds;
    std::optional<double> selectedAudioEndSeconds;
    bool shouldKeepFinalWordTimings = false; ///< whether the final's word times fit `text`
    AppleFinalReconcileDecisionRecord record;
};

} // namespace tessarune
