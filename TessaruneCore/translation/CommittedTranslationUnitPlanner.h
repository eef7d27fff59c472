#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <optional>
#include <span>
#include <string_view>

/// Groups committed rows without a translation into texts that are translated as one. Pure
/// functions, safe from any thread.
namespace tessarune::CommittedTranslationUnitPlanner {

/// The next unit, starting at the first pending row; `nullopt` if no row is pending or the unit
/// should still grow. `forceTail` accepts an unfinished unit. The caller marks the members and
/// calls again.
std::optional<CommittedTranslationUnit> nextPendingUnit(std::span<const CaptionSegment> segments,
                                                        bool forceTail = false,
                                                        const UUIDSource& newID = UUID::random);

/// Whether the text ends a sentence, ignoring closing quotes and brackets.
bool hasTerminalPunctuation(std::string_view text);
/// Whether the text contains a letter, mark or number.
bool hasTranslatableContent(std::string_view text);

} // namespace tessarune::CommittedTranslationUnitPlanner
