#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/recognition/ASREventLog.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace tessarune {

/// The file of `--event-log`, which may also be a pipe or a device. An existing file is overwritten
/// only if the user allows it, and not before the session listens. Main queue; failures are
/// RunFailure with ExitStatus::cannotWrite.
class EventLogFile {
  public:
    EventLogFile(Host& host, std::filesystem::path path, bool overwrites)
        : host_(host), path_(std::move(path)), overwrites_(overwrites) {}

    ~EventLogFile();
    EventLogFile(const EventLogFile&) = delete;

    /// Throws if it can tell, without changing anything, that the log cannot be written. `source`
    /// is the captioned file, which is never overwritten.
    void check(const std::optional<std::filesystem::path>& source) const;
    /// Opens the log and leaves the contents of an existing file. A new file disappears again
    /// unless the session begins.
    void open();
    /// The session listens: empties an existing file.
    void begin();
    /// Logs a recognition event; does nothing before `open`.
    void append(const ASREvent& event, double t);
    /// Throws if a part of the log was lost.
    void close();

  private:
    [[noreturn]] void fail(const std::string& why) const;

    Host& host_;
    std::filesystem::path path_;
    bool overwrites_;
    bool isUnusedNewFile_ = false;
    std::unique_ptr<ASREventLog::Writer> writer_;
};

} // namespace tessarune
