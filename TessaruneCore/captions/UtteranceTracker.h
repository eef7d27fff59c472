#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Follows one utterance word by word and sentence by sentence: when each word was first seen, how
/// often each leading sentence and the tail were rewritten. Words are what stands between blanks,
/// matched by position only. Times are seconds of the core's clock.
struct UtteranceTracker {
    std::vector<double> wordFirstSeen;               ///< per word of the whole utterance
    std::vector<std::optional<double>> wordRevealed; ///< per word, when it was first shown
    std::int64_t committedWordCount = 0;
    std::vector<std::int64_t> leadingChangeCounts; ///< per leading sentence
    std::int64_t tailChangeCount = 0;              ///< rewrites; growth does not count
    std::string prevTail;                          ///< of the last observation
    std::vector<std::string> prevDisplayLeading;   ///< likewise

    /// Gives every word of `fullText` a time: new ones get `t`.
    void alignWords(std::string_view fullText, double t);

    /// Takes in what is displayed now. Returns the change counts of the sentences that were frozen
    /// from the front of the leading ones.
    std::vector<std::int64_t> observe(std::string_view fullText,
                                      const std::vector<std::string>& displayLeading,
                                      std::string_view tail, std::size_t newlyFrozenCount,
                                      double t);
};

} // namespace tessarune
