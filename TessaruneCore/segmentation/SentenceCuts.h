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

/// Cuts a text in one pass into two lists of pieces: into sentences, and into sentences and
/// clauses. `SentenceSegmenter` defines what a piece is.
///
/// Designed for a text that grows and changes at its end: cuts in the prefix that it shares with
/// the previous text are not computed again. The pieces point into this object and are valid until
/// the next cut. Confined to its owner's thread.
class SentenceCuts {
  public:
    SentenceCuts() = default;
    SentenceCuts(const SentenceCuts&) = delete;
    SentenceCuts& operator=(const SentenceCuts&) = delete;

    struct Rules {
        bool sentences = true;  ///< compute the list of sentences
        bool clauses = false;   ///< compute the list of clauses
        std::int64_t limit = 0; ///< a long text after the last cut is split into parts of this many
                                ///< units; below 1: it is not split
        BoundaryUnit boundaryUnit = BoundaryUnit::words;
    };

    void cut(std::string_view text, const Rules& rules);

    /// The same for a trimmed text that is already split into characters, without the fast path for
    /// ASCII and without reuse of the previous cuts. Tests compare the two.
    void cut(std::string_view text, const std::vector<std::string_view>& characters,
             const Rules& rules);

    const std::vector<std::string_view>& sentences() const { return sentences_.pieces; }
    const std::vector<std::string_view>& clauses() const { return clauses_.pieces; }

  private:
    /// A piece that ends in punctuation.
    struct Cut {
        std::size_t end;   ///< the index of the character after the piece
        std::size_t start; ///< the byte offset of the trimmed piece
        std::size_t size;  ///< in bytes
    };
    /// One of the two lists.
    struct Level {
        bool wanted = false;
        std::vector<Cut> cuts;
        std::vector<std::string_view> pieces;

        /// The index of the first character after the last cut.
        std::size_t end() const { return cuts.empty() ? 0 : cuts.back().end; }
    };

    std::size_t replaceText(std::string_view text, const Rules& rules);
    void append(std::string_view character);
    void finish(std::int64_t limit);
    template <typename Characters>
    void walk(const Characters& characters, std::size_t unchanged, BoundaryUnit unit);
    template <typename Characters>
    bool endsPiece(const Characters& characters, std::size_t start, std::size_t end,
                   SentencePunctuation::Traits mark) const;
    void appendLongTail(std::string_view text, std::size_t maximumLength, std::int64_t limit,
                        std::vector<std::string_view>& pieces);
    void appendCutWords(std::string_view text, std::int64_t limit,
                        std::vector<std::string_view>& pieces);
    static void appendCutCharacters(std::string_view text, std::int64_t limit,
                                    std::vector<std::string_view>& pieces);

    std::string text_;
    bool isASCII_ = true;
    BoundaryUnit unit_ = BoundaryUnit::words;
    Level sentences_;
    Level clauses_;
    std::vector<std::size_t> ends_{0}; ///< 0, then where each character ends; not for ASCII
    std::vector<SentencePunctuation::Traits> traits_; ///< of each character; not for ASCII
    std::list<std::string> joined_; ///< pieces that are not substrings of the text
};

} // namespace tessarune
