#include "Tessarune/display/LiveCaptionDisplaySignatures.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

SourceSegmentEdgeSignature SourceSegmentEdgeSignature::of(const CaptionSegment& segment) {
    return {segment.id, segment.revision, segment.sourceText, segment.state};
}

bool SourceSegmentEdgeSignature::operator==(const SourceSegmentEdgeSignature& other) const {
    return id == other.id && revision == other.revision &&
           Text::equal(sourceText, other.sourceText) && state == other.state;
}

SourceSegmentArraySignature
SourceSegmentArraySignature::of(std::span<const CaptionSegment> segments) {
    if (segments.empty())
        return {};
    return {segments.size(), SourceSegmentEdgeSignature::of(segments.front()),
            SourceSegmentEdgeSignature::of(segments.back())};
}

SegmentEdgeSignature SegmentEdgeSignature::of(const CaptionSegment& segment) {
    return {segment.id,
            segment.revision,
            segment.sourceText,
            segment.translatedText.value_or(""),
            segment.translationUnitID,
            segment.state};
}

bool SegmentEdgeSignature::hasSameSource(const SegmentEdgeSignature& other) const {
    return id == other.id && revision == other.revision &&
           Text::equal(sourceText, other.sourceText) && state == other.state;
}

bool SegmentEdgeSignature::operator==(const SegmentEdgeSignature& other) const {
    return hasSameSource(other) && Text::equal(translatedText, other.translatedText) &&
           translationUnitID == other.translationUnitID;
}

LiveTailSegmentArraySignature
LiveTailSegmentArraySignature::of(std::span<const CaptionSegment> segments) {
    LiveTailSegmentArraySignature signature;
    for (const CaptionSegment& segment : segments)
        signature.edges.push_back(SegmentEdgeSignature::of(segment));
    return signature;
}

TranslationSignature TranslationSignature::of(std::span<const CaptionSegment> committed,
                                              std::size_t clearedCount) {
    TranslationSignature signature{committed.size(), clearedCount, {}, {}};
    if (!committed.empty()) {
        signature.first = SegmentEdgeSignature::of(committed.front());
        signature.last = SegmentEdgeSignature::of(committed.back());
    }
    return signature;
}

bool TranslationSignature::isContinuedBy(std::span<const CaptionSegment> committed,
                                         const TranslationSignature& now,
                                         bool exceptTranslations) const {
    const auto isSame = [exceptTranslations](const SegmentEdgeSignature& a,
                                             const SegmentEdgeSignature& b) {
        return exceptTranslations ? a.hasSameSource(b) : a == b;
    };
    if (clearedCount != now.clearedCount || committed.size() < committedCount)
        return false;
    return committedCount == 0 ||
           (isSame(*first, *now.first) &&
            isSame(*last, SegmentEdgeSignature::of(committed[committedCount - 1])));
}

} // namespace tessarune
