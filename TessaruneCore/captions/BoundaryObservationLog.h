#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/diagnostics/LineLogWriter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One line of a boundary log.
struct BoundaryObservationRecord {
    double t = 0;
    std::string phase;
    std::string inputText;
    std::vector<std::string> softPieces;
    std::vector<std::string> hardPieces;
    std::vector<std::string> leading;
    std::string tail;
    std::vector<std::string> reasons; ///< diagnostic values

    explicit BoundaryObservationRecord(BoundaryObservation observation);

    /// A JSON object without a line feed that has every key; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

/// Log of boundary decisions: why sentences were cut where they were.
namespace BoundaryObservationLog {

/// Writes one record per line; see `LineLogWriter` for threads and failures.
class Writer {
  public:
    /// Creates or truncates the file. Null if it cannot be opened.
    static std::unique_ptr<Writer> open(Host& host, const std::filesystem::path& path);

    /// Returns at once.
    void append(BoundaryObservation observation);
    /// Writes what is queued, then closes the file.
    void close() { lines_->close(); }

  private:
    explicit Writer(std::unique_ptr<LineLogWriter> lines) : lines_(std::move(lines)) {}

    std::unique_ptr<LineLogWriter> lines_;
};

} // namespace BoundaryObservationLog

} // namespace tessarune
