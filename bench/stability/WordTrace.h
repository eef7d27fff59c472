#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tessarune {

/// How calm a text was while it came into being. Times are in seconds; each list has an element a
/// word of the final text, `untilSettled` only for those that were settled.
struct Stability {
    std::size_t words = 0;            ///< of the final text
    std::size_t updates = 0;          ///< how often the text became another one
    std::size_t erased = 0;           ///< words taken back, each time counted
    std::size_t unstable = 0;         ///< final words that replaced another one, or were gone once
    std::vector<double> untilSteady;  ///< from a word's first appearance to its last change
    std::vector<double> untilSettled; ///< from there to when it was settled

    void add(const Stability& other);

    /// Normalised erasure: 0 for a text that only ever grew.
    double erasedPerWord() const;
    double unstableShare() const;
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
    Stability stability() const;

  private:
    struct Word {
        std::string text;
        double shownAt = 0;
        double changedAt = 0;
        bool isUnstable = false;
    };
    using Words = std::vector<Word>;
    using Texts = std::vector<std::string>;
    class Following;

    void countErased(const Texts& texts);
    static void finish(const Word& word, Stability& stability);

    Words open_;
    Words gone_; ///< taken back from the end of the open words, and not yet said again
    Stability settled_;
};

} // namespace tessarune
