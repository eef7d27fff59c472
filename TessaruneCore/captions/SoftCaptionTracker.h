#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/segmentation/StabilityKeyList.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Follows the clauses of the open tail by position and says which have stood still long enough to
/// be shown. Nothing commits them, and they may be withdrawn. Stability is judged on
/// `SentenceStabilityKey`.
struct SoftCaptionTracker {
    struct Row {
        UUID id; ///< also the identity of the caption row made from it
        std::string text;
        std::string normalized;
        double firstSeenAt = 0;
        double stableSince = 0;
        bool visible = false; ///< stays set while the row lives

        bool operator==(const Row&) const;
    };

    struct Advance {
        std::vector<CaptionSegment> segments; ///< the visible rows, in order
        bool changed = false;                 ///< other keys are visible than before
    };

    std::vector<Row> rows;
    std::vector<std::string> visibleSnapshot; ///< keys of the rows now visible

    bool isEmpty() const { return rows.empty() && visibleSnapshot.empty(); }
    void clear();

    /// One step with the newest candidates. `newID` gives the identities of new rows, `revision`
    /// goes into the segments.
    Advance advance(const std::vector<std::string>& candidates, bool enabled, double stableSeconds,
                    double now, std::int64_t revision, const UUIDSource& newID);

  private:
    void place(std::size_t position, std::string_view text, double stableSeconds, double now,
               const UUIDSource& newID);

    StabilityKeyList keys_; ///< of the last candidates; a memory of work done, which `clear` keeps
};

} // namespace tessarune
