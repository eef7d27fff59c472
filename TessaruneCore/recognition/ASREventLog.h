#pragma once

#include "TessaruneCore/diagnostics/LineLogWriter.h"
#include "TessaruneCore/recognition/ASREventRecord.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/// The file of a session's recognition events, from which its captions can be replayed.
namespace tessarune::ASREventLog {

/// Writes one record per line; see `LineLogWriter` for threads and failures.
class Writer {
  public:
    using Existing = LineLogWriter::Existing;

    /// Opens the file and creates it if necessary. Null if that fails; `errno` then has the reason.
    static std::unique_ptr<Writer> open(Host& host, const std::filesystem::path& path,
                                        Existing existing = Existing::isTruncated);

    /// Returns at once. `t` is the time at which the event is logged; defaults to now.
    void append(ASREvent event, std::optional<double> t = std::nullopt);
    /// Writes what is queued, then closes the file.
    void close() { lines_->close(); }
    /// As in `LineLogWriter`. Call after `close`.
    bool hasLostLines() const { return lines_->hasLostLines(); }
    int writeError() const { return lines_->writeError(); }

  private:
    Writer(Host& host, std::unique_ptr<LineLogWriter> lines);

    Host& host_;
    std::unique_ptr<LineLogWriter> lines_;
};

/// The records of a file, sorted by time; records with equal times keep the file's order. Skips
/// lines that are not records, including a truncated last line.
///
/// Throws `std::system_error` if the file cannot be read and `std::runtime_error` if it is not
/// UTF-8. Uses memory for the file and its records.
std::vector<ASREventRecord> read(const std::filesystem::path& path);
/// The same for text that was already read.
std::vector<ASREventRecord> parsed(std::string_view contents);

} // namespace tessarune::ASREventLog
