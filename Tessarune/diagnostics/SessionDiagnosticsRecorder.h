#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunContext.h"
#include "Tessarune/diagnostics/IdleMemorySentinel.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/session/SessionDiagnostics.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Posted with a run's folder when a run begins, ends or changes.
inline constexpr std::string_view diagnosticsRunDidUpdate = "diagnosticsRunDidUpdate";

/// Leaves a run of each session behind: a folder under "Diagnostics" with as much in it as the
/// setting `diagnosticsLevel` asks for when the session starts.
///
/// Main queue, and it never waits for the disk there: the folder apart, which is made before the
/// session starts, everything is written on queues of low priority, and what cannot be written is
/// missing. What it observes is dropped at once unless a run keeps a log of it.
class SessionDiagnosticsRecorder final : public SessionDiagnostics {
  public:
    /// What is named by reference outlives the recorder.
    struct Environment {
        Host& host;
        FileSystem& files;
        TessarunePaths paths;
        AppSettings& settings;
        TessaruneFileLogger& logger;
        RecordingCatalog& catalog;
        ProcessFigures& figures;
        const NotificationCenter* notifications = nullptr;
        DiagnosticsRunContext::App app;
        /// Hears each recognition event, whatever the level is.
        std::function<void(const ASREvent&, double t)> onASREvent;
        /// Whether a run that starts now may hold what is said; absent: it may.
        std::function<bool()> mayRecord = {};
        /// The windows of the program, for an alarm of the sentinel; absent where there are none.
        IdleMemorySentinel::Windows windows;
    };

    explicit SessionDiagnosticsRecorder(Environment environment);
    ~SessionDiagnosticsRecorder() override;

    /// A run is open and keeps everything: display code asks this before it observes anything.
    bool isFullDiagnosticsRunning() const;
    /// Closes the open run as it stands.
    void stopWithoutExport();

    // SessionDiagnostics
    void attach(const SessionView& view) override { view_ = &view; }
    void startIfNeeded(const Start& start) override;
    bool isRunning() const override { return run_ != nullptr; }
    bool capturesFullDiagnostics() const override { return isFullDiagnosticsRunning(); }
    void noteRecording(const std::optional<RecordingMetadata>& recording) override;
    void recordLiveCaptionStopSnapshot(const StopSnapshot& about) override;
    void finish(const Finish& finish) override;
    void discardCurrentRun() override;
    void closeLifecycle() override;
    void updateFinishedSnapshot(const TranscriptSnapshot& snapshot) override;
    bool isWriting() const override { return *pendingWrites_ > 0; }
    void lifecycle(const LifecycleEntry& entry) override;
    void noteAudioBuffer(double sampleRate) override;
    void notePerfStats(const PerfStats& stats) override;
    void appendASREvent(const ASREvent& event, double t) override;
    void markCaptions(CaptionMark mark, double t) override;
    void appendAppleRawResult(const AppleSpeechAnalyzerRawResultRecord& record) override;
    void appendAppleSummaryResult(const AppleSpeechAnalyzerSummaryRecord& record) override;
    void appendAppleFinalReconcile(const AppleFinalReconcileDecisionRecord& record) override;
    void appendBoundary(const BoundaryObservation& observation) override;
    void appendCorrection(const CorrectionObservation& observation) override;
    void recordSoftCaption(const SoftCaptionObservation& observation) override;
    void appendTranslation(const TranslationObservation& observation) override;
    void captionDisplayRefreshed(const CaptionDisplayRefresh& refresh) override;
    void recordCaptionFollow(const std::string& event, const LogFields& fields) override;
    void recordCaptionDisplaySettingChange(const std::string& name,
                                           const std::string& value) override;
    void startIdleMemorySentinel(const IdleWatch& watch) override;
    void stopIdleMemorySentinel(const std::string& reason) override { sentinel_.stop(reason); }

  private:
    struct Run;
    struct Ending;
    struct FinishedRun;

    DiagnosticsLevel levelOfRun() const;
    std::filesystem::path makeRunDirectory(double wallClock);
    void openLogs(Run& run);
    void logStart(const Run& run);
    void announce(const std::filesystem::path& directory);
    void write(Block block);
    void close(std::shared_ptr<Run> run);
    void removeIfDeleted(const std::optional<RecordingMetadata>& recording,
                         const std::filesystem::path& directory);
    DiagnosticsNDJSONWriter* log(std::string_view artifact) const;
    void writeCaptionSettings(double t);
    void writeDisplayUnits(const CaptionDisplayRefresh& refresh);

    const Environment environment_;
    const SessionView* view_ = nullptr; // of the session that is attached
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<std::atomic<int>> pendingWrites_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<Run> run_;
    std::shared_ptr<Run> finished_; // its lifecycle log stays open until the session has ended
    std::shared_ptr<FinishedRun> lastFinished_; // a full one, until another session begins
    IdleMemorySentinel sentinel_;
};

} // namespace tessarune
