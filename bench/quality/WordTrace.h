#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// A word of the final text. Times in seconds.
struct TracedWord {
    std::string text;
    double shownAt = 0;              ///< when this word, or one that it replaced, was first shown
    double changedAt = 0;            ///< when the word became this text
    std::optional<double> settledAt; ///< `nullopt` if it was still open at the end
    bool isUnstable = false;         ///< replaced another word, or had disappeared once
};

/// How a text developed.
struct WordHistory {
    std::vector<TracedWord> words; ///< of the final text
    std::size_t updates = 0;       ///< how often the text changed
    std::size_t erased = 0;        ///< withdrawn words, counted each time
};

/// Follows a text whose settled beginning never changes and whose open remainder is rewritten
/// repeatedly.
///
/// Erasure is counted as in the literature: each new text withdraws all words after the first
/// difference to the previous one. The stability of a single word is judged less strictly, by the
/// longest common subsequence of the two texts: a word that is changed, inserted or removed does
/// not make the words after it unstable. See bench/README.md.
class WordTrace {
  public:
    /// Sets the text from `time` on: the words settled before, then `newlySettled`, then `open`.
    /// Times must not decrease.
    void show(double time, const std::vector<std::string>& newlySettled,
              const std::vector<std::string>& open);

    /// The history of the current text, including the words that are still open.
    WordHistory history() const;

  private:
    using Words = std::vector<TracedWord>;
    using Texts = std::vector<std::string>;
    class Following;

    void countErased(const Texts& texts);
    Words open_;
    Words gone_; ///< withdrawn from the end of the open words, and not shown again yet
    WordHistory settled_;
};

} // namespace tessarune
