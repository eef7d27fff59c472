#pragma once

#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// A file to which lines are added, on a serial queue of its own and of low priority.
///
/// Each line goes to the file at once, in one piece and unbuffered, so that a crash loses no more
/// than what still waits in the queue. What can't be encoded or written is lost without a word, and
/// later lines are tried all the same; a line that was cut short never runs into the next.
///
/// Any thread may append. Neither `close` nor the destructor may run on the writer's own queue.
class LineLogWriter {
  public:
    /// Makes a line without its line feed, or nothing if it can't be made. Runs on the queue.
    using Encode = std::function<std::optional<std::string>()>;

    /// Creates the file, or empties the one that is there. Null if it can't be opened. The host
    /// must outlive the writer.
    static std::unique_ptr<LineLogWriter> open(Host& host, std::string_view queueLabel,
                                               const std::filesystem::path& path);
    ~LineLogWriter();
    LineLogWriter(const LineLogWriter&) = delete;
    LineLogWriter& operator=(const LineLogWriter&) = delete;

    /// Returns at once. After `close` the line is lost.
    void append(Encode encode);

    /// Waits for what was appended before, and closes the file. The second time does nothing.
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
