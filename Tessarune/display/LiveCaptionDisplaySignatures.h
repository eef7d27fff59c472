#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessarune {

// While the signature of a list stays equal, the rows that were derived from the list are valid.
// The signature of the committed rows contains only their number and the first and the last row.
// The rows between them need no comparison: committed rows change only by a translation, and each
// translation comes with a patch.

/// A committed row, without its translation.
struct SourceSegmentEdgeSignature {
    UUID id;
    std::int64_t revision = 0;
    std::string sourceText;
    CaptionSegmentState state = CaptionSegmentState::partial;

    static SourceSegmentEdgeSignature of(const CaptionSegment& segment);
    bool operator==(const SourceSegmentEdgeSignature& other) const;
};

struct SourceSegmentArraySignature {
    std::size_t count = 0;
    std::optional<SourceSegmentEdgeSignature> first;
    std::optional<SourceSegmentEdgeSignature> last;

    static SourceSegmentArraySignature of(std::span<const CaptionSegment> segments);
    bool operator==(const SourceSegmentArraySignature&) const = default;
};

struct SourceSignature {
    SourceSegmentArraySignature committed;
    std::size_t clearedCount = 0;

    bool operator==(const SourceSignature&) const = default;
};

/// A row with its translation; an absent translation counts as an empty one.
struct SegmentEdgeSignature {
    UUID id;
    std::int64_t revision = 0;
    std::string sourceText;
    std::string translatedText;
    std::optional<UUID> translationUnitID;
    CaptionSegmentState state = CaptionSegmentState::partial;

    static SegmentEdgeSignature of(const CaptionSegment& segment);
    bool hasSameSource(const SegmentEdgeSignature& other) const;
    bool operator==(const SegmentEdgeSignature& other) const;
};

/// The live tail is short, so all its rows are compared.
struct LiveTailSegmentArraySignature {
    std::vector<SegmentEdgeSignature> edges;

    static LiveTailSegmentArraySignature of(std::span<const CaptionSegment> segments);
    bool operator==(const LiveTailSegmentArraySignature&) const = default;
};

struct LiveTailSignature {
    LiveTailSegmentArraySignature liveLeading;
    LiveTailSegmentArraySignature softCaptions;
    std::size_t clearedCount = 0;

    bool operator==(const LiveTailSignature&) const = default;
};

struct PartialSignature {
    SegmentEdgeSignature edge;
    bool visible = false;

    bool operator==(const PartialSignature&) const = default;
};

struct TranslationSignature {
    std::size_t committedCount = 0;
    std::size_t clearedCount = 0;
    std::optional<SegmentEdgeSignature> first;
    std::optional<SegmentEdgeSignature> last;

    static TranslationSignature of(std::span<const CaptionSegment> committed,
                                   std::size_t clearedCount);
    /// Whether `committed`, whose signature is `now`, begins with the rows of this signature. With
    /// `exceptTranslations`, their translations may have changed.
    bool isContinuedBy(std::span<const CaptionSegment> committed, const TranslationSignature& now,
                       bool exceptTranslations) const;
    bool operator==(const TranslationSignature&) const = default;
};

} // namespace tessarune
