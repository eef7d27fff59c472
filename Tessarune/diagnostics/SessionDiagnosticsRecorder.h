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

/// Writes a diagnostics run for each session, and another run after each change of the recogniser.
/// A run is a folder under "Diagnostics". The setting `diagnosticsLevel` at the start of the run
/// decides what it contains, and whether there is a run at all.
///
/// Main queue, where the recorder never waits for the disk, except to make the folder of a run.
/// Queues of low priority write everything else, and leave out what cannot be written. An
/// observation for which the run has no log is dropped at once.
class SessionDiagnosticsRecorder final : public SessionDiagnostics {
  public:
    /// The references outlive the recorder.
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
        /// Called with each recognition event, whatever the level is; may be empty.
        std::function<void(const ASREvent&, double t)> onASREvent;
        /// Returns whether a run that starts now may contain spoken text. If the function is empty,
        /// every run may.
        std::function<bool()> mayRecord = {};
        /// The windows of the program, for alarms of the sentinel; empty if it has none.
        IdleMemorySentinel::Windows windows;
    };

    explicit SessionDiagnosticsRecorder(Environment environment);
    ~SessionDiagnosticsRecorder() override;

    /// Whether a full run is open.
    bool isFullDiagnosticsRunning() const;
    /// Closes the logs of the open run, without finishing it.
    void stopWithoutExport();

    // SessionDiagnostics
    void attach(const SessionView& view) override { view_ = &view; }
    void startIfNeeded(const Start& start) override;
    bool isRunning() const override { return run_ != nullptr; }
    bool capturesFullDiagnostics() const override { return isFullDiagnosticsRunning(); }
    void noteRecording(const std::optional<RecordingMetadata>& recording) override;
    void recordLiveCaptionStopSnapshot(const StopSnapshot& stop) override;
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
    void announce(const std::filesystem::path& directory);
    void write(Block block);
    void close(std::shared_ptr<Run> run);
    void removeIfDeleted(const std::optional<RecordingMetadata>& recording,
                         const std::filesystem::path& directory);
    DiagnosticsNDJSONWriter* log(std::string_view artifact) const;
    void writeCaptionSettings(double t);
    void writeDisplayUnits(const CaptionDisplayRefresh& refresh);

    const Environment environment_;
    const SessionView* view_ = nullptr; // of the attached session
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<std::atomic<int>> pendingWrites_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<Run> run_;
    std::shared_ptr<Run> finished_; // its lifecycle log stays open until the session has ended
    std::shared_ptr<FinishedRun> lastFinished_; // null if it was no full run
    IdleMemorySentinel sentinel_;
};

} // namespace tessarune
