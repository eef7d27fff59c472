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
    /// To be called with the rows of now before they are printed.
    void follow(const CaptionCore::Rows& rows) {
        const bool isSameList =
            count_ == 0 || (count_ <= rows.size() && rows[count_ - 1].id == last_);
        if (!isSameList)
            *this = PrintedRows();
    }
    std::size_t count() const { return count_; }
    /// The first row that is not printed yet; there is one. It counts as printed from now on.
    const CaptionSegment& next(const CaptionCore::Rows& rows) {
        last_ = rows[count_].id;
        return rows[count_++];
    }
    /// Indexes of printed rows that show an outcome of translation not taken before.
    std::vector<std::size_t> news(const CaptionCore::Rows& rows) {
        return news_.take(rows, count_);
    }

  private:
    std::size_t count_ = 0;
    UUID last_;
    TranslationNews news_;
};

} // namespace tessarune
