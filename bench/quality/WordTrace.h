#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// A word of the final text. Times in seconds.
struct TracedWord {
    std::string text;
    double shownAt = 0;              ///< when a word first stood in its place
    double changedAt = 0;            ///< when it last became another one
    std::optional<double> settledAt; ///< nothing if it was still open at the end
    bool isUnstable = false;         ///< replaced another word, or was gone once
};

/// How a text came into being.
struct WordHistory {
    std::vector<TracedWord> words; ///< of the final text
    std::size_t updates = 0;       ///< how often the text became another one
    std::size_t erased = 0;        ///< words taken back, each time counted
};

/// Follows a text whose settled front never changes and whose open rest is rewritten again and
/// again.
///
/// Erasure is counted as the literature does: going from one text to the next takes back all words
/// behind the first difference. Whether a single word is stable is judged less strictly, along the
/// longest common subsequence of the two texts: a word that is changed, put in or left out does not
/// make the words behind it unstable. See bench/README.md.
class WordTrace {
  public:
    /// What is shown from `time` on: what was settled before, then the words that are settled now,
    /// then the open ones. Times do not decrease.
    void show(double time, const std::vector<std::string>& newlySettled,
              const std::vector<std::string>& open);

    /// For the text as it stands; words that are still open count as final.
    WordHistory history() const;

  private:
    using Words = std::vector<TracedWord>;
    using Texts = std::vector<std::string>;
    class Following;

    void countErased(const Texts& texts);
    Words open_;
    Words gone_; ///< taken back from the end of the open words, and not yet said again
    WordHistory settled_;
};

} // namespace tessarune
