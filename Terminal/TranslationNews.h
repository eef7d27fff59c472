#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessarune {

/// Finds the translations and failures that have arrived since the last call, each once. The retry
/// of a failed unit is a unit of its own. Main queue.
class TranslationNews {
  public:
    /// Of the first `count` rows, returns the indexes of those that show a new outcome. `count`
    /// never decreases.
    std::vector<std::size_t> take(const CaptionCore::Rows& rows, std::size_t count);

  private:
    std::size_t finished_ = 0; ///< rows before this index are translated and taken
    /// For the rows from `finished_` on: the unit whose outcome was taken last.
    std::deque<std::optional<UUID>> takenUnits_;
};

/// The rows of the unit whose outcome the row at `index` shows.
std::span<const CaptionSegment> unitRows(const CaptionCore::Rows& rows, std::size_t index);

/// The texts of these rows, in one line.
std::string sourceText(std::span<const CaptionSegment> rows);

/// Whether the row shows its unit's outcome. A unit has an outcome once it is translated or has
/// failed, and exactly one row of the unit shows it.
bool showsOutcome(const CaptionSegment& row);

} // namespace tessarune
