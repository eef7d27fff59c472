#pragma once

#include "Tessarune/refinement/SpeechAnalyzerFileRecords.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "TessaruneCore/diagnostics/LifecyclePhase.h"
#include "TessaruneCore/diagnostics/LogFields.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Observes the refinement of one recording for its diagnostics run. This base class ignores all
/// calls. Called on the main queue; no function may throw.
class HistoryRefinementObserver {
  public:
    enum class Status { running, finished, skipped, failed };

    /// A line of the run's lifecycle log.
    struct Lifecycle {
        std::string name;
        LifecyclePhase phase = LifecyclePhase::instant;
        LogFields fields;
        std::optional<Status> status; ///< set only for a finish
        std::optional<double> elapsedSeconds;
    };
    /// The translation of one sentence: its start, then its success or failure.
    struct Translation {
        enum class Event { start, success, failure };
        Event event = Event::start;
        std::int64_t index = 0; ///< the index of the sentence
        std::string sourceLanguage;
        std::string targetLanguage;
        std::string source;
        std::optional<double> elapsedSeconds;
        std::string translated; ///< set only for a success
        std::string error;      ///< set only for a failure
    };

    virtual ~HistoryRefinementObserver() = default;

    virtual void lifecycle(const Lifecycle&) {}
    virtual void appleResult(const SpeechAnalyzerFileResultSummary&) {}
    virtual void splitCandidate(const SpeechAnalyzerFileSplitObservation&) {}
    virtual void finalSegment(std::int64_t /*index*/,
                              const SpeechAnalyzerFileTranscriptionResult::Segment&) {}
    virtual void sourceSaved(std::int64_t /*segments*/, const std::string& /*timelineKind*/) {}
    virtual void translation(const Translation&) {}
    virtual void bilingualSaved(std::int64_t /*segments*/, const std::string& /*target*/) {}
    /// Called last.
    virtual void close(Status) {}
};

constexpr std::string_view name(HistoryRefinementObserver::Status status) {
    using Status = HistoryRefinementObserver::Status;
    switch (status) {
    case Status::running:
        return "running";
    case Status::finished:
        return "finished";
    case Status::skipped:
        return "skipped";
    case Status::failed:
        return "failed";
    }
    return {};
}

} // namespace tessarune
