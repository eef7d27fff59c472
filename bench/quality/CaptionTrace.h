#pragma once

#include "bench/quality/WordTrace.h"

#include <string>
#include <string_view>

namespace tessarune {

/// Follows the words of captions through the output of `tessarune-terminal --json`, line by line.
///
/// Rows whose sound began before `from` (seconds since 1970) are a lead-in. Their words are
/// ignored, as is everything that was shown before the last of these rows was committed.
class CaptionTrace {
  public:
    explicit CaptionTrace(double from) : from_(from) {}

    /// Throws std::exception if the line is not a JSON object of the program.
    void read(std::string_view line);

    /// Returns the history of all lines that were read. Call once.
    WordHistory finish();

  private:
    void applyCommitted();

    double from_;
    WordTrace trace_;
    std::string open_; ///< the text that may still change
    /// Rows that were committed together and are not in `trace_` yet.
    std::string committed_;
    double committedAt_ = 0;
};

} // namespace tessarune
