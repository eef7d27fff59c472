#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <optional>
#include <span>
#include <string_view>

/// Groups committed rows that still wait for a translation into texts that are sensible to
/// translate as a whole. Pure functions, safe from any thread.
namespace tessarune::CommittedTranslationUnitPlanner {

/// The next unit, beginning with the first pending row, or nothing while its text should still
/// grow. With `forceTail` an unfinished group is a unit too. Nothing is changed: the caller marks
/// the members and asks again.
std::optional<CommittedTranslationUnit> nextPendingUnit(std::span<const CaptionSegment> segments,
                                                        bool forceTail = false,
                                                        const UUIDSource& newID = UUID::random);

/// Whether the text ends a sentence, closing quotes and brackets aside.
bool hasTerminalPunctuation(std::string_view text);
/// Whether there is a letter, mark or digit in the text.
bool hasTranslatableContent(std::string_view text);

} // namespace tessarune::CommittedTranslationUnitPlanner
