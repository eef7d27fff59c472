#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <algorithm>
#include <unordered_map>

namespace tessarune::TranslationSegmentMutator {

namespace {

void clearUnit(CaptionSegment& segment) {
    segment.translationUnitID.reset();
    segment.translationResultSegmentID.reset();
    segment.translationUnitIndex.reset();
    segment.translationUnitCount.reset();
}

/// Calls `write` for each member row and sets its unit fields. Returns whether a row changed.
template <typename Write>
bool applyToMembers(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                    const UUID& resultSegmentID, std::span<CaptionSegment> segments, Write write) {
    std::unordered_map<UUID, std::int64_t> indexByID;
    for (std::size_t i = 0; i < segmentIDs.size(); ++i)
        indexByID.emplace(segmentIDs[i], static_cast<std::int64_t>(i));

    bool changed = false;
    for (auto& segment : segments) {
        const auto member = indexByID.find(segment.id);
        if (member == indexByID.end())
            continue;
        const CaptionSegment before = segment;
        write(segment);
        segment.translationUnitID = translationUnitID;
        segment.translationResultSegmentID = resultSegmentID;
        segment.translationUnitIndex = member->second;
        segment.translationUnitCount = static_cast<std::int64_t>(segmentIDs.size());
        changed = changed || !(segment == before);
    }
    return changed;
}

} // namespace

bool isPending(const CaptionSegment& segment) {
    return !segment.translatedText && !segment.translationError;
}

std::optional<std::size_t> nextPendingIndex(std::span<const CaptionSegment> segments) {
    const auto pending = std::find_if(segments.begin(), segments.end(), isPending);
    if (pending == segments.end())
        return std::nullopt;
    return static_cast<std::size_t>(pending - segments.begin());
}

void clearResults(std::span<CaptionSegment> segments) {
    for (auto& segment : segments) {
        segment.translatedText.reset();
        segment.translationError.reset();
        clearUnit(segment);
    }
}

void clearErrors(std::span<CaptionSegment> segments) {
    clearErrors(segments, [](const CaptionSegment&) { return true; });
}

bool clearErrors(std::span<CaptionSegment> segments,
                 const std::function<bool(const CaptionSegment& segment)>& matching) {
    bool cleared = false;
    for (auto& segment : segments) {
        if (!segment.translationError || !matching(segment))
            continue;
        segment.translationError.reset();
        clearUnit(segment);
        cleared = true;
    }
    return cleared;
}

bool applySuccess(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view translatedText,
                  std::span<CaptionSegment> segments) {
    return applyToMembers(
        translationUnitID, segmentIDs, resultSegmentID, segments, [&](CaptionSegment& segment) {
            segment.translatedText = segment.id == resultSegmentID ? translatedText : "";
            segment.translationError.reset();
        });
}

bool applyFailure(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view error,
                  std::span<CaptionSegment> segments) {
    return applyToMembers(translationUnitID, segmentIDs, resultSegmentID, segments,
                          [&](CaptionSegment& segment) { segment.translationError = error; });
}

} // namespace tessarune::TranslationSegmentMutator
