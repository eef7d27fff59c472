#pragma once

#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/HistoryRefinementObserver.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tessarune {

/// Writes how a recording is transcribed again into the diagnostics run of its session.
///
/// Main queue; everything is written on queues of low priority. A run that is removed meanwhile
/// stays away. What is named by reference outlives it.
class HistoryRefinementDiagnosticsSession final : public HistoryRefinementObserver {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        RecordingCatalog& catalog;
        TessaruneFileLogger& logger;
        /// Writes the manifest and closes the logs; the session is not its last owner, who waits.
        std::shared_ptr<SerialQueue> queue;
    };

    /// Null where the session of the recording left no run, or one that is to hold no texts.
    static std::shared_ptr<HistoryRefinementDiagnosticsSession>
    open(const Environment& environment, const HistoryRefinementRequest& request);
    /// Closes as failed what nobody closed.
    ~HistoryRefinementDiagnosticsSession() override;

    void lifecycle(const Lifecycle& entry) override;
    void appleResult(const SpeechAnalyzerFileResultSummary& summary) override;
    void splitCandidate(const SpeechAnalyzerFileSplitObservation& observation) override;
    void finalSegment(std::int64_t index,
                      const SpeechAnalyzerFileTranscriptionResult::Segment& segment) override;
    void sourceSaved(std::int64_t segments, const std::string& timelineKind) override;
    void translation(const Translation& step) override;
    void bilingualSaved(std::int64_t segments, const std::string& target) override;
    void close(Status status) override;

  private:
    struct Logs;
    struct Counters {
        std::int64_t appleResultCount = 0;
        std::int64_t appleFinalCount = 0;
        std::int64_t applePartialCount = 0;
        std::int64_t splitObservationCount = 0;
        std::int64_t finalSegmentCount = 0;
        std::int64_t translationStartCount = 0;
        std::int64_t translationSuccessCount = 0;
        std::int64_t translationFailureCount = 0;
        bool sourceSaved = false;
        bool bilingualSaved = false;
    };

    HistoryRefinementDiagnosticsSession(const Environment& environment,
                                        const HistoryRefinementRequest& request,
                                        std::filesystem::path runDirectory);
    nlohmann::json record(std::string_view event) const;
    nlohmann::json manifestEntry(Status status) const;
    void updateManifest(Status status);

    const Environment environment_;
    const HistoryRefinementRequest request_;
    const std::filesystem::path runDirectory_;
    std::shared_ptr<Logs> logs_; // null once it is closed
    Counters counters_;
};

} // namespace tessarune
