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

/// Observes the refinement of one recording for its diagnostics run. This base class keeps nothing.
/// Called on the main queue; nothing may throw.
class HistoryRefinementObserver {
  public:
    enum class Status { running, finished, skipped, failed };

    /// A line of the run's lifecycle log.
    struct Lifecycle {
        std::string name;
        LifecyclePhase phase = LifecyclePhase::instant;
        LogFields fields;
        std::optional<Status> status; ///< of a finish
        std::optional<double> elapsedSeconds;
    };
    /// The translation of one sentence: its start, then its success or failure.
    struct Translation {
        enum class Event { start, success, failure };
        Event event = Event::start;
        std::int64_t index = 0; ///< of the sentence
        std::string sourceLanguage;
        std::string targetLanguage;
        std::string source;
        std::optional<double> elapsedSeconds;
        std::string translated; ///< of a success
        std::string error;      ///< of a failure
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
    /// The last call.
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
