#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Writes the outcome of a translation unit into caption rows: one row gets the unit's translation,
/// the other members are only marked as parts of the unit. Changes translation fields only. Pure
/// functions on the given rows, safe from any thread.
namespace tessarune::TranslationSegmentMutator {

/// Whether the row has neither a translation nor a failure.
bool isPending(const CaptionSegment& segment);

std::optional<std::size_t> nextPendingIndex(std::span<const CaptionSegment> segments);

/// Makes every row pending.
void clearResults(std::span<CaptionSegment> segments);

/// Clears the failure and the unit of every failed row; keeps translations.
void clearErrors(std::span<CaptionSegment> segments);
/// The same for failed rows that `matching` accepts. Returns whether anything was cleared.
bool clearErrors(std::span<CaptionSegment> segments,
                 const std::function<bool(const CaptionSegment& segment)>& matching);

/// Writes the unit's translation to the row `resultSegmentID`. Writes "" to the other members,
/// which marks them as done without showing the translation twice. Returns whether a field of a row
/// changed.
bool applySuccess(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view translatedText,
                  std::span<CaptionSegment> segments);

/// Writes the failure to every member; keeps existing translations. Returns whether a field of a
/// row changed.
bool applyFailure(const UUID& translationUnitID, const std::vector<UUID>& segmentIDs,
                  const UUID& resultSegmentID, std::string_view error,
                  std::span<CaptionSegment> segments);

} // namespace tessarune::TranslationSegmentMutator
