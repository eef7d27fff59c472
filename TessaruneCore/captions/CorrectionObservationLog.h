#pragma once

#include "TessaruneCore/captions/CorrectionObservation.h"
#include "TessaruneCore/diagnostics/LineLogWriter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// One line of a correction log: the observation, field by field.
struct CorrectionObservationRecord : CorrectionObservation {
    /// A JSON object without a line feed; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

/// Log of what finals corrected: how much of the text on screen was wrong.
namespace CorrectionObservationLog {

/// Writes one record per line; see `LineLogWriter` for threads and failures.
class Writer {
  public:
    /// Creates or truncates the file. Null if it cannot be opened.
    static std::unique_ptr<Writer> open(Host& host, const std::filesystem::path& path);

    /// Returns at once.
    void append(CorrectionObservation observation);
    /// Writes what is queued, then closes the file.
    void close() { lines_->close(); }

  private:
    explicit Writer(std::unique_ptr<LineLogWriter> lines) : lines_(std::move(lines)) {}

    std::unique_ptr<LineLogWriter> lines_;
};

} // namespace CorrectionObservationLog

} // namespace tessarune
