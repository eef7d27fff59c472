#pragma once

#include "Tessarune/display/SharedVector.h"
#include "TessaruneCore/captions/CaptionSegment.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// One caption row as views see it. A value.
struct LiveCaptionDisplaySegment {
    UUID id;                    ///< the segment's id; for a merged row, the id of its last segment
    std::string sourceText;     ///< trimmed, never empty
    std::string translatedText; ///< trimmed; empty: there is none
    std::optional<UUID> translationUnitID;
    std::int64_t revision = 0;
    CaptionSegmentState state = CaptionSegmentState::partial;

    /// `GhostTranslationPlanner::normalizedKey` of the source.
    std::string normalizedSourceKey() const;

    /// `nullopt` for a segment without a visible text.
    static std::optional<LiveCaptionDisplaySegment> from(const CaptionSegment& segment);

    bool operator==(const LiveCaptionDisplaySegment&) const = default;
};

/// The rows of a list, copied in constant time.
using LiveCaptionDisplayRows = SharedVector<LiveCaptionDisplaySegment>;

} // namespace tessarune
