#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How the outcome of a translation unit is written into caption rows: the unit's text lands on one
/// row, the other members are only marked as belonging to it. Touches the translation fields alone.
/// Pure functions on the given rows, safe from any thread.
namespace tessarune::TranslationSegmentMutator {

/// Neither a translation nor a failure: the row still waits.
bool isPending(const CaptionSegment& segment);

std::optional<std::size_t> nextPendingIndex(std::span<const CaptionSegment> segments);

/// Every row becomes pending.
void clearResults(std::span<CaptionSegment> segments);

/// Rows with a failure lose it and their unit; a translation stays.
void clearErrors(std::span<CaptionSegment> segments);
/// The same for failures that `matching` accepts. `onClear` sees each such row as it was before.
/// True if anything was cleared.
bool clearErrors(std::span<CaptionSegment> segments,
                 const std::function<bool(const std::string& error)>& matching,
                 const std::function<void(const CaptionSegment& segment)>& onClear);

/// The unit's text goes to the row `resultSegmentID`, "" to the other members: they have a result,
/// and do not show it a second time. True if a field of a row differs afterwards.
bool applySuccess(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view translatedText,
                  std::span<CaptionSegment> segments);

/// Every member carries the failure; a translation that stands there stays. True if a field of a
/// row differs afterwards.
bool applyFailure(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view error,
                  std::span<CaptionSegment> segments);

} // namespace tessarune::TranslationSegmentMutator
