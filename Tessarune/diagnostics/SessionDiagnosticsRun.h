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

/// A run in progress: its data and its open logs. The recorder fills it on the main queue and
/// passes it to the recorder's queue when the run ends. Until then, the recorder's queue uses only
/// `id`, `files` and `host`.
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
    double t0 = 0;          ///< the start, on the session's clock
    double startedWall = 0; ///< seconds since 1970
    double sampleRate = 0;  ///< of the first sound; 0 before it
    Json sections;          ///< of manifest and settings.json, from the start of the run
    Json host;              ///< one more section, with sensor data; only on the recorder's queue
    LogFields stopRequestFields;
    std::optional<RecordingMetadata> recording;
    std::optional<CaptionCore::Config> captionSettings; ///< the last ones in the event log
    std::map<std::string, std::unique_ptr<DiagnosticsNDJSONWriter>, std::less<>> logs;
    std::unique_ptr<DiagnosticsNDJSONWriter> lifecycle;
    std::unique_ptr<PerfSampler> sampler;
    Json manifest; ///< of a finished run; only on the recorder's queue

    void writeLifecycle(const LifecycleEntry& entry);
    void writeLifecycle(double t, const char* name, const LogFields& fields = {}) {
        writeLifecycle({t, name, LifecyclePhase::instant, std::nullopt, fields});
    }
    /// Waits until all queued records are written and closes the logs, except the lifecycle log.
    /// Sets `lost` to the numbers of lost records by the name of the log; a log that lost none is
    /// left out.
    void closeLogs(Json& lost);
    Json manifestHead() const; ///< without the host
};

/// The data that finishes a run, copied on the main queue.
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
    /// The fields of log entries about the end of the run.
    LogFields fields(const Run& run) const;
    std::optional<std::string> timeline(const Run& run) const;
    JSON::Value perfSummary(const Run& run) const;
    JSON::Value manifest(Run& run, const JSON::Value& lost) const;
};

/// A finished run, and its new texts if translations arrive later. Any thread.
struct SessionDiagnosticsRecorder::FinishedRun {
    FinishedRun(std::filesystem::path itsDirectory, std::optional<RecordingMetadata> itsRecording)
        : directory(std::move(itsDirectory)), recording(std::move(itsRecording)) {}

    const std::filesystem::path directory;
    const std::optional<RecordingMetadata> recording;

    /// Sets the texts to write and returns the texts that were still waiting. If there were any, a
    /// write is already queued, and it will write the new texts.
    std::optional<TranscriptSnapshot> exchange(std::optional<TranscriptSnapshot> texts) {
        const MutexLock guard(lock_);
        return std::exchange(unwritten_, std::move(texts));
    }

  private:
    Mutex lock_;
    std::optional<TranscriptSnapshot> unwritten_ GUARDED_BY(lock_);
};

} // namespace tessarune
