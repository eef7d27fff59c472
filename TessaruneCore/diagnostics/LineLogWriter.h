#pragma once

#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Appends lines to a file on a serial queue of its own with low priority.
///
/// Each line is written at once, in one unbuffered write, so a crash loses only queued lines. Lines
/// that cannot be encoded or written are dropped silently, since a diagnostic log must not disturb
/// its caller. Later lines are still tried, and a partial line never runs into the next.
///
/// Any thread may append. Neither `close` nor the destructor may run on the writer's own queue.
class LineLogWriter {
  public:
    /// Encodes a line without its line feed; `nullopt` on failure. Runs on the queue.
    using Encode = std::function<std::optional<std::string>()>;

    /// Creates or truncates the file. Null if it cannot be opened. The host must outlive the
    /// writer.
    static std::unique_ptr<LineLogWriter> open(Host& host, std::string_view queueLabel,
                                               const std::filesystem::path& path);
    ~LineLogWriter();
    LineLogWriter(const LineLogWriter&) = delete;
    LineLogWriter& operator=(const LineLogWriter&) = delete;

    /// Returns at once. Does nothing after `close`.
    void append(Encode encode);

    /// Writes what is queued, then closes the file. Idempotent.
    void close();

  private:
    LineLogWriter(std::shared_ptr<SerialQueue> queue, int file);
    void write(const Encode& encode);
    void writeAll(std::string_view bytes);

    std::shared_ptr<SerialQueue> queue_;
    int file_; // the queue's alone; below 0 once closed
    bool endsInsideALine_ = false;
};

} // namespace tessarune
