#pragma once

#include "bench/quality/WordTrace.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Follows the words of captions through what `tessarune-terminal --json` prints, a line at a time.
///
/// Rows whose sound began before `from` (seconds since 1970) are a lead-in: their words are left
/// out, and so is everything that was shown until the last of them was committed.
class CaptionTrace {
  public:
    explicit CaptionTrace(double from) : from_(from) {}

    /// Throws std::exception if the line is no JSON object of the program's.
    void read(std::string_view line);

    /// Of all lines that were read; call it once.
    WordHistory finish();

  private:
    void applyCommitted();

    double from_;
    WordTrace trace_;
    std::string open_; ///< the text that may still change
    /// Rows that were committed together; the open text behind them comes in the next line.
    std::string committed_;
    double committedAt_ = 0;
};

} // namespace tessarune
