#pragma once

#include "TessaruneCore/host/Host.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Appends lines to a file on a serial queue of its own with low priority.
///
/// Lines are written without a buffer, so a crash loses only queued lines. Lines that cannot be
/// encoded or written, and lines that arrive while `maximumQueued` others are queued, are dropped
/// silently, because a diagnostic log must not disturb its caller. Later lines are still written,
/// and a partial line never runs into the next.
///
/// A new file is private to its user. A pipe is written at its reader's pace until `close`, which
/// waits at most two seconds in total for a reader that has stopped reading.
///
/// Any thread may append. Neither `close` nor the destructor may run on the writer's own queue.
class LineLogWriter {
  public:
    static constexpr std::size_t maximumQueued = 4096;

    /// Encodes a line without its line feed; `nullopt` on failure. Runs on the queue.
    using Encode = std::function<std::optional<std::string>()>;

    /// What `open` does with an existing file.
    enum class Existing { isTruncated, isAppendedTo, isRefused };

    /// Opens the file and creates it if necessary. Null if that fails; `errno` then has the reason.
    /// The host must outlive the writer.
    static std::unique_ptr<LineLogWriter> open(Host& host, std::string_view queueLabel,
                                               const std::filesystem::path& path,
                                               Existing existing = Existing::isTruncated);
    ~LineLogWriter();
    LineLogWriter(const LineLogWriter&) = delete;
    LineLogWriter& operator=(const LineLogWriter&) = delete;

    /// Returns at once. Does nothing after `close`.
    void append(Encode encode);

    /// Writes what is queued, then closes the file. Idempotent.
    void close();

    /// Whether a line was lost because too many were queued, or because its encoding or writing
    /// failed. Call after `close`.
    bool hasLostLines() const { return hasLostLines_; }
    /// The `errno` of the last failed write; 0 if no write has failed.
    int writeError() const { return writeError_; }

  private:
    LineLogWriter(std::shared_ptr<SerialQueue> queue, int file);
    void write(const Encode& encode);
    void writeAll(std::string_view bytes);
    bool waitForReader();

    std::shared_ptr<SerialQueue> queue_;
    int file_; // used only on the queue; negative once closed
    bool endsInsideALine_ = false;
    int waitsLeft_; // how often to wait for a reader after `close` was called
    std::atomic<std::size_t> queued_ = 0;
    std::atomic<bool> isClosing_ = false;
    std::atomic<bool> hasLostLines_ = false;
    std::atomic<int> writeError_ = 0;
};

} // namespace tessarune
