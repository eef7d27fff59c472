#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/host/Host.h"

#include <memory>
#include <set>
#include <source_location>
#include <string>
#include <string_view>

namespace tessarune {

/// Important events are written at every level except `off`, routine events only at `verbose` and
/// `trace`.
enum class Importance { routine, important };

/// The structured runtime log: one JSON object per line in "Logs/runtime-<yyyy-MM-dd>.jsonl" under
/// the data folder, one file per day.
///
/// `event` may be called from any thread; it returns at once, and the line is written on the queue
/// "Tessarune.FileLogger". A failed write never reaches the caller; `TessaruneLog` reports the
/// first failure after each success. Events that arrive while 4096 others are queued are lost; the
/// next event that is queued states their number in "lostEventsBefore".
/// `TessaruneLog::diagnosticsLevel()` decides what may be written.
class TessaruneFileLogger {
  public:
    TessaruneFileLogger(Host& host, FileSystem& files, TessarunePaths paths);
    ~TessaruneFileLogger();
    TessaruneFileLogger(const TessaruneFileLogger&) = delete;
    TessaruneFileLogger& operator=(const TessaruneFileLogger&) = delete;

    /// Whether a log has this name.
    static bool isLogFile(std::string_view name);

    /// Calls `pruneOldLogs` and writes the event "app.bootstrap" with `fields`.
    void bootstrap(LogFields fields);

    void event(std::string name, LogFields fields = {}, Importance importance = Importance::routine,
               std::source_location source = std::source_location::current());
    void important(std::string name, LogFields fields = {},
                   std::source_location source = std::source_location::current()) {
        event(std::move(name), std::move(fields), Importance::important, source);
    }

    /// Removes from the log files all lines that contain one of these texts (identifiers and paths
    /// of deleted recordings). Waits for the queue.
    void deleteEntries(const std::set<std::string>& matchingRecordingIDs,
                       const std::set<std::string>& matchingText);

    /// Removes all log files. Waits for the queue.
    void deleteAllLogs();

    /// Removes day files that are older than two weeks.
    void pruneOldLogs();

    /// Waits until all queued events are written.
    void flush();

  private:
    class Writer;
    Host& host_;
    std::shared_ptr<Writer> writer_; // used on the queue only, except for its counters
    std::shared_ptr<SerialQueue> queue_;
};

} // namespace tessarune
