#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Tracks one utterance by word and by sentence: when each word was first seen, and how often each
/// leading sentence and the tail were rewritten. Words are separated by blanks and matched by
/// position only. Times are seconds on the core's clock; a word that is first seen in a final has
/// the time of the final's end.
struct UtteranceTracker {
    std::vector<double> wordFirstSeen;               ///< per word of the whole utterance
    std::vector<std::optional<double>> wordRevealed; ///< per word, when it was first shown
    std::int64_t committedWordCount = 0;             ///< words of the committed sentences
    std::vector<std::int64_t> leadingChangeCounts;   ///< per leading sentence
    std::int64_t tailChangeCount = 0;                ///< rewrites; growth does not count
    std::string prevTail;                            ///< the tail at the last `observe`
    std::vector<std::string> prevDisplayLeading;     ///< the sentences at the last `observe`

    /// Records `t` as the first-seen time of every new word of `fullText`.
    void alignWords(std::string_view fullText, double t);

    /// Compares the displayed text with the previous one and updates the counts. Returns the change
    /// counts of the leading sentences that were frozen.
    std::vector<std::int64_t> observe(std::string_view fullText,
                                      const std::vector<std::string>& displayLeading,
                                      std::string_view tail, std::size_t newlyFrozenCount,
                                      double t);
};

} // namespace tessarune
