#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/segmentation/StabilityKeyList.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Tracks the clauses of the open tail by position and shows those that have been stable long
/// enough (soft captions). Soft captions may be withdrawn; only a seal commits them. Two texts are
/// the same if their stability keys are equal.
struct SoftCaptionTracker {
    struct Row {
        UUID id; ///< also the identity of the caption row made from it
        std::string text;
        std::string normalized; ///< the stability key of `text`
        double firstSeenAt = 0;
        double stableSince = 0;
        bool visible = false; ///< stays set until the row is replaced

        bool operator==(const Row&) const;
    };

    struct Advance {
        std::vector<CaptionSegment> segments; ///< the visible rows, in order
        bool changed = false;                 ///< the keys of the visible rows differ from before
    };

    std::vector<Row> rows;
    std::vector<std::string> visibleSnapshot; ///< keys of the rows now visible

    bool isEmpty() const { return rows.empty() && visibleSnapshot.empty(); }
    void clear();

    /// Updates the rows to the newest candidates. `newID` creates the identities of new rows;
    /// `revision` is stored in the segments.
    Advance advance(const std::vector<std::string>& candidates, bool enabled, double stableSeconds,
                    double now, std::int64_t revision, const UUIDSource& newID);

  private:
    void place(std::size_t position, std::string_view text, double stableSeconds, double now,
               const UUIDSource& newID);

    StabilityKeyList keys_; ///< of the last candidates: a cache, which `clear` keeps
};

} // namespace tessarune
