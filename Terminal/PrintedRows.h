#pragma once

#include "Terminal/TranslationNews.h"
#include "TessaruneCore/CaptionCore.h"

#include <cstddef>
#include <vector>

namespace tessarune {

/// Counts the committed rows that an output has printed. A session empties its list when the
/// recogniser changes; the count then starts again at 0. Main queue.
class PrintedRows {
  public:
    /// Call with the current rows before printing any of them.
    void follow(const CaptionCore::Rows& rows) {
        const bool isSameList =
            count_ == 0 || (count_ <= rows.size() && rows[count_ - 1].id == last_);
        if (!isSameList)
            *this = PrintedRows();
    }
    std::size_t count() const { return count_; }
    /// Returns the first unprinted row, which must exist, and counts it as printed.
    const CaptionSegment& next(const CaptionCore::Rows& rows) {
        last_ = rows[count_].id;
        return rows[count_++];
    }
    /// Returns the indexes of printed rows that show a new translation or failure, each once.
    std::vector<std::size_t> news(const CaptionCore::Rows& rows) {
        return news_.take(rows, count_);
    }

  private:
    std::size_t count_ = 0;
    UUID last_;
    TranslationNews news_;
};

} // namespace tessarune
