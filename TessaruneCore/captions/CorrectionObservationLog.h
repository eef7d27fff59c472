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
    /// As a JSON object without a line feed; nothing if `t` is no number.
    std::optional<std::string> line() const;
};

/// The file that tells how much of the text shown was wrong.
namespace CorrectionObservationLog {

/// Writes one record a line; see `LineLogWriter` for threads and failures.
class Writer {
  public:
    /// Creates the file, or empties the one that is there. Null if it can't be opened.
    static std::unique_ptr<Writer> open(Host& host, const std::filesystem::path& path);

    /// Returns at once.
    void append(CorrectionObservation observation);
    /// Waits for what was appended before, and closes the file.
    void close() { lines_->close(); }

  private:
    explicit Writer(std::unique_ptr<LineLogWriter> lines) : lines_(std::move(lines)) {}

    std::unique_ptr<LineLogWriter> lines_;
};

} // namespace CorrectionObservationLog

} // namespace tessarune
