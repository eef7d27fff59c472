#pragma once

#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/SessionLog.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

class LiveTranscriptStore;
struct RecordingMetadata;

/// Stops a session: drains the last words from the recogniser and seals them, gives translations a
/// limited time, compresses the recording, saves everything, and makes the session idle again. The
/// stop shows and logs failures and continues.
///
/// Main queue. The store owns it; the task of a stop keeps the store alive.
class LiveSessionStop {
  public:
    explicit LiveSessionStop(LiveTranscriptStore& store);
    ~LiveSessionStop();
    LiveSessionStop(const LiveSessionStop&) = delete;

    /// Ends the session, if there is one. While the session is being saved, only cancels a queued
    /// start.
    void request(const LiveSessionControlTrigger& trigger);
    /// Starts another session as soon as this one is saved.
    void startAgainAfterwards();
    /// A session that ends before it listens is not worth keeping: its recording is discarded.
    void noteSessionStarting() { isWorthKeeping_ = false; }
    void noteSessionListening() { isWorthKeeping_ = true; }

    /// Whether the task of a stop is running.
    bool isRunning() const { return task_.has_value(); }
    /// Whether a stop is in progress. False as soon as another session may begin, even if the task
    /// is still running.
    bool isFinalizing() const { return isFinalizing_; }

  private:
    using Store = std::shared_ptr<LiveTranscriptStore>;
    using Step = SessionLog::Step;

    static Task<void> run(std::weak_ptr<LiveTranscriptStore> weak, std::uint64_t number);
    Task<void> drainEngine(Store store);
    Task<void> finalize(Store store);
    Step beginFinalize();
    std::vector<UUID> sealLiveRows();
    void sealLiveIntoCommitted();
    bool heardNothing() const;
    void discardEmptyRecording();
    Task<bool> drainTranslation(Store store);
    void finishDiagnostics();
    bool persist();
    bool persistTranscript();
    std::optional<HistoryRefinementRequest> refinementRequest() const;
    void cleanUp();
    void bigCleanup();
    void returnToIdle(bool transcriptPersisted, bool translationCompleted);
    void report(const Step& step, bool transcriptPersisted, bool translationCompleted);
    void finishFinalize();

    // LiveSessionStop+Compression.cpp
    Task<void> compressRecordingIfNeeded(Store store);
    void skipCompression(const char* reason, LogFields fields = {});
    void reportCompressed(const RecordingMetadata& source, const RecordingMetadata& result,
                          const Step& step);
    void reportCompressFailure(const RecordingMetadata& source, const std::string& error,
                               const Step& step);

    LogFields triggerFields() const;
    LogFields liveCounts() const;
    SessionLog& log() const;

    LiveTranscriptStore& store_;
    const std::shared_ptr<SerialQueue> utilityQueue_;
    std::optional<TaskHandle> task_; // present while the task of a stop runs
    std::uint64_t number_ = 0;       // of the latest stop
    double requestedAt_ = 0;
    bool isFinalizing_ = false;
    bool isWorthKeeping_ = false;
    bool wasEmpty_ = false; // the recording was discarded because it was empty
    std::optional<LiveSessionControlTrigger> trigger_;
};

} // namespace tessarune
