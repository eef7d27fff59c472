#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessarune {

/// Finds the translations and failures that have come since the last look, each once. A unit that
/// failed and was translated later comes twice. Main queue.
class TranslationNews {
  public:
    /// Indexes of those of the first `count` rows that show an outcome not taken before. `count`
    /// never gets smaller.
    std::vector<std::size_t> take(const CaptionCore::Rows& rows, std::size_t count);

  private:
    std::size_t finished_ = 0;                   // rows before it are translated, and were taken
    std::deque<std::optional<UUID>> takenUnits_; // of the rows from there on
};

/// The rows of the unit whose outcome the row at `index` shows.
std::span<const CaptionSegment> unitRows(const CaptionCore::Rows& rows, std::size_t index);

/// What these rows say, in one line.
std::string sourceText(std::span<const CaptionSegment> rows);

/// Whether the row is the one that shows its unit's outcome.
bool showsOutcome(const CaptionSegment& row);

} // namespace tessarune
