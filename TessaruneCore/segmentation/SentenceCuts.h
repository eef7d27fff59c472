#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"
#include "TessaruneCore/segmentation/SentencePunctuation.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The pieces of one text, as sentences and as sentences and clauses, both from one walk: whoever
/// needs the two pays for one. `SentenceSegmenter` says what a piece is.
///
/// The pieces point into the text or into this object, until the next cut. An object that is used
/// again keeps its memory. Confined to its owner's thread.
class SentenceCuts {
  public:
    struct Rules {
        bool sentences = true; ///< wanted at all
        bool clauses = false;
        std::int64_t limit = 0; ///< length of a cut in a remainder without punctuation
        BoundaryUnit boundaryUnit = BoundaryUnit::words;
    };

    void cut(std::string_view text, const Rules& rules);

    /// As `cut`, for a trimmed text whose characters are given. Slow and obvious, to test the quick
    /// way against.
    void cut(std::string_view text, const std::vector<std::string_view>& characters,
             const Rules& rules);

    const std::vector<std::string_view>& sentences() const { return sentences_.pieces; }
    const std::vector<std::string_view>& clauses() const { return clauses_.pieces; }

  private:
    struct Level {
        bool wanted = false;
        std::size_t start = 0; ///< the character after the last cut
        std::vector<std::string_view> pieces;
    };

    void begin(std::string_view text, const Rules& rules);

    void append(std::string_view character);
    template <typename Characters>
    void walk(const Characters& characters);
    template <typename Characters>
    bool endsPiece(const Characters& characters, const Level& level,
                   SentencePunctuation::Traits mark, std::size_t end) const;
    void appendLongTail(std::string_view text, std::vector<std::string_view>& pieces);
    void appendCharacterLongTail(std::string_view text, std::vector<std::string_view>& pieces);
    std::string_view keep(std::string text);

    Level sentences_;
    Level clauses_;
    std::int64_t limit_ = 0;
    BoundaryUnit unit_ = BoundaryUnit::words;
    std::vector<std::size_t> ends_;                   ///< of each character, after a 0
    std::vector<SentencePunctuation::Traits> traits_; ///< of each character
    std::list<std::string> joined_;                   ///< pieces that are no stretch of the text
};

} // namespace tessarune
