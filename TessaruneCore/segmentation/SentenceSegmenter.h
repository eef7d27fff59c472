#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Cuts a recognised text into sentences, or into sentences and clauses, and a remainder that has
/// no closing punctuation yet. English, Chinese and mixed text; abbreviations, initials and decimal
/// numbers do not end a sentence, and a run-on text without punctuation is cut at fixed lengths.
///
/// Pure functions, safe from any thread. They run on every update of the recogniser: one pass over
/// the text, with a walk over bytes where the text is ASCII.
namespace SentenceSegmenter {

/// A clause is cut off only if it holds at least this many units.
inline constexpr std::int64_t minClauseWords = 3;
/// Default length of a cut in a remainder without punctuation.
inline constexpr std::int64_t maxUnpunctuatedWords = 28;
/// The same for languages that are counted in characters; recognisers of such languages declare it.
inline constexpr std::int64_t maxUnpunctuatedCharacters = 48;
/// A remainder is cut only if it is longer than the limit by more than this, so that no fragment is
/// left hanging alone.
inline constexpr std::int64_t minTailWordsAfterLongSplit = 8;
inline constexpr std::int64_t minTailCharactersAfterLongSplit = 12;

/// The pieces in reading order, trimmed and not empty. The last one may be unfinished.
///
/// `clauseLevel` also cuts at commas and semicolons. `boundaryUnit` is the unit of the limit;
/// characters count only if the text has a Han ideograph, else words do. A limit below 1 leaves the
/// remainder whole.
std::vector<std::string> pieces(std::string_view text, bool clauseLevel = false,
                                std::int64_t limit = maxUnpunctuatedWords,
                                BoundaryUnit boundaryUnit = BoundaryUnit::words);

struct Segmentation {
    std::vector<std::string> leading; ///< all pieces but the last
    std::string live;                 ///< the last one, even if it ends in a full stop

    bool operator==(const Segmentation&) const;
};

Segmentation segment(std::string_view text, bool clauseLevel = false,
                     std::int64_t limit = maxUnpunctuatedWords,
                     BoundaryUnit boundaryUnit = BoundaryUnit::words);

} // namespace SentenceSegmenter

} // namespace tessarune
