#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Cuts recognised text into sentences, or into sentences and clauses, plus a remainder without
/// final punctuation. Handles English, Chinese and mixed text. Abbreviations, initials and
/// decimal numbers do not end a sentence; run-on text without punctuation is cut at fixed lengths.
///
/// Pure functions, safe from any thread. Partials are cut by `SentenceCuts`, which keeps the cuts
/// of the previous text.
namespace SentenceSegmenter {

/// The minimum number of units in a clause.
inline constexpr std::int64_t minClauseWords = 3;
/// The default limit for a remainder without punctuation, in words.
inline constexpr std::int64_t maxUnpunctuatedWords = 28;
/// The limit for Chinese, in characters. `EngineCapabilities::localized` uses it.
inline constexpr std::int64_t maxUnpunctuatedCharacters = 48;
/// A remainder is cut only if it exceeds the limit by more than this, so that no short fragment
/// remains.
inline constexpr std::int64_t minTailWordsAfterLongSplit = 8;
inline constexpr std::int64_t minTailCharactersAfterLongSplit = 12;

/// The pieces in reading order, trimmed and not empty. The last one may be unfinished.
///
/// `clauseLevel` also cuts at commas and semicolons. `boundaryUnit` is the unit of the limit, but a
/// text without a Han ideograph is always measured in words. A limit below 1 leaves the remainder
/// whole.
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
