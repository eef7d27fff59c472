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

/// Records the refinement of a recording in the diagnostics run of its session.
///
/// Main queue; queues of low priority write everything. A run that is removed in the meantime is
/// not recreated. The references outlive this object.
class HistoryRefinementDiagnosticsSession final : public HistoryRefinementObserver {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        RecordingCatalog& catalog;
        TessaruneFileLogger& logger;
        /// Writes the manifest and closes the logs. Another object must own the queue, too, so that
        /// this object does not destroy it: the destructor of a queue waits for its blocks.
        std::shared_ptr<SerialQueue> queue;
    };

    /// Returns null if the recording has no run. Also returns null if its run is a core run,
    /// because a core run must not contain texts.
    static std::shared_ptr<HistoryRefinementDiagnosticsSession>
    open(const Environment& environment, const HistoryRefinementRequest& request);
    /// Closes the record of the refinement as failed if it is still open.
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
    std::shared_ptr<Logs> logs_; // null after `close`
    Counters counters_;
};

} // namespace tessarune
