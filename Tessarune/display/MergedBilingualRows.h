#pragma once

#include "Tessarune/display/LiveCaptionDisplaySegment.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tessarune {

/// Rows that each show a complete translation unit: adjacent rows of one unit whose state is
/// `final` become one row, with their texts joined and the id of the last of them. A change of
/// source rows rebuilds only the units of these rows.
///
/// Main queue.
class MergedBilingualRows {
  public:
    const LiveCaptionDisplayRows& rows() const { return rows_; }

    void rebuild(const LiveCaptionDisplayRows& source);
    /// Adds the source rows from index `oldCount` on. The first of them may join the last row.
    void patchAfterAppend(const LiveCaptionDisplayRows& source, std::size_t oldCount);
    /// Call when the source rows with the indexes `affected` have changed. Rebuilds all rows if
    /// `affected` is empty or has an invalid index.
    void patch(const LiveCaptionDisplayRows& source, std::span<const std::size_t> affected);

  private:
    /// A range of source rows, from `lower` to before `upper`.
    struct Span {
        std::size_t lower = 0;
        std::size_t upper = 0;
    };
    /// A range of merged rows.
    struct Merged {
        std::size_t first = 0;
        std::size_t last = 0; // one past the last row
    };

    static bool canMerge(const LiveCaptionDisplayRows& source, std::size_t first,
                         std::size_t second);
    Merged overlapping(Span range) const;
    void replace(Merged merged, const LiveCaptionDisplayRows& source, Span range);
    void append(const LiveCaptionDisplayRows& source, Span range);
    void appendGroup(const LiveCaptionDisplayRows& source, Span group);

    LiveCaptionDisplayRows rows_;
    std::vector<Span> spans_; ///< the source rows of each merged row, in order and without gaps
};

} // namespace tessarune
