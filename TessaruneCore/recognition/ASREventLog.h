#pragma once

#include "TessaruneCore/diagnostics/LineLogWriter.h"
#include "TessaruneCore/recognition/ASREventRecord.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

/// The file in which a session's recognition events are kept, to make its captions again later.
namespace tessarune::ASREventLog {

/// Writes one record a line; see `LineLogWriter` for threads and failures.
class Writer {
  public:
    /// Creates the file, or empties the one that is there. Null if it can't be opened.
    static std::unique_ptr<Writer> open(Host& host, const std::filesystem::path& path);

    /// Returns at once. `t` is when the event is logged, by default now.
    void append(ASREvent event, std::optional<double> t = std::nullopt);
    /// Waits for what was appended before, and closes the file.
    void close() { lines_->close(); }

  private:
    Writer(Host& host, std::unique_ptr<LineLogWriter> lines);

    Host& host_;
    std::unique_ptr<LineLogWriter> lines_;
};

/// The records of a file in the order of their times; those of the same time in the order of the
/// file. Lines that are no records are skipped, as is a last line that was cut off anywhere.
///
/// Throws `std::system_error` if the file can't be read, and `std::runtime_error` if it is not
/// UTF-8. Takes memory for the file and its records.
std::vector<ASREventRecord> read(const std::filesystem::path& path);

} // namespace tessarune::ASREventLog
