#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "Tessarune/diagnostics/PerfSampler.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/text/JSON.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// One run on its way: what is known of it, and its open logs. The recorder fills it on the main
/// queue and gives it to its own queue when it ends.
struct SessionDiagnosticsRecorder::Run {
    using Json = JSON::Value;

    Run(FileSystem& disk, std::filesystem::path directory, std::string itsOptionID, bool isFull)
        : id(directory.filename().string()),
          optionID(itsOptionID),
          files(disk, std::move(directory), std::move(itsOptionID), isFull) {}

    const std::string id;
    const std::string optionID;
    std::string optionTitle;
    DiagnosticsRunFiles files;
    double t0 = 0;          ///< on the session's clock
    double startedWall = 0; ///< seconds since 1970
    double sampleRate = 0;  ///< of the first sound; 0: there was none
    Json sections;          ///< of manifest and settings: program and settings at the start
    Json host;              ///< another, for which sensors are asked; the recorder's queue alone
    LogFields stopRequestFields;
    std::optional<RecordingMetadata> recording;
    std::optional<CaptionCore::Config> captionSettings; ///< as the event log has them
    std::map<std::string, std::unique_ptr<DiagnosticsNDJSONWriter>, std::less<>> logs;
    std::unique_ptr<DiagnosticsNDJSONWriter> lifecycle;
    std::unique_ptr<PerfSampler> sampler;
    Json manifest; ///< of a finished run; the recorder's queue alone

    void writeLifecycle(const LifecycleEntry& entry);
    void writeLifecycle(double t, const char* name, const LogFields& fields = {}) {
        writeLifecycle({t, name, LifecyclePhase::instant, std::nullopt, fields});
    }
    /// Waits for what is queued. `lost` gets how many records of each log are missing.
    void closeLogs(Json& lost);
    Json manifestHead() const; ///< without the host
};

/// What the end of a session leaves, as it was on the main queue.
struct SessionDiagnosticsRecorder::Ending {
    Finish finish;
    CaptionCore::Rows segments;
    CaptionCore::WordEvents wordEvents;
    CaptionCore::Config config;
    EngineCapabilities caps;
    std::int64_t smoothPaceMS = 0;
    double finishedWall = 0;
    double finishedAt = 0; ///< on the session's clock
    std::string sourceTranscriptPath;
    std::string bilingualTranscriptPath;

    std::size_t wordEventCount() const;
    /// What the logs say of the end.
    LogFields fields(const Run& run) const;
    std::optional<std::string> timeline(const Run& run) const;
    JSON::Value perfSummary(const Run& run) const;
    JSON::Value manifest(Run& run, const JSON::Value& lost) const;
};

/// A run that is complete, and the texts that it gets for later translations. Any thread.
struct SessionDiagnosticsRecorder::FinishedRun {
    FinishedRun(std::filesystem::path itsDirectory, std::optional<RecordingMetadata> itsRecording)
        : directory(std::move(itsDirectory)), recording(std::move(itsRecording)) {}

    const std::filesystem::path directory;
    const std::optional<RecordingMetadata> recording;

    /// Gives what is still to be written. Only the latest texts are: translations that come while
    /// the disk is busy queue nothing of their own.
    std::optional<TranscriptSnapshot> exchange(std::optional<TranscriptSnapshot> texts) {
        const MutexLock guard(lock_);
        return std::exchange(unwritten_, std::move(texts));
    }

  private:
    Mutex lock_;
    std::optional<TranscriptSnapshot> unwritten_ GUARDED_BY(lock_);
};

} // namespace tessarune
