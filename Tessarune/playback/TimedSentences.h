#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tessarune {

/// A word of a sentence: it can be clicked, and is highlighted while it is heard.
struct SentenceToken {
    std::size_t offset = 0; ///< bytes, in the sentence's text
    std::size_t length = 0; ///< in bytes
    double start = 0;       ///< seconds of the recording

    bool operator==(const SentenceToken&) const = default;
};

/// The sentences of a transcript with the times at which they and their words are heard. A plain
/// value; its functions are pure.
class TimedSentences {
  public:
    using Sentence = HistoryWordTimeline::Sentence;

    TimedSentences() = default;
    explicit TimedSentences(std::optional<HistoryWordTimeline> timeline);

    /// Null if there is no such sentence.
    const Sentence* sentenceTiming(std::size_t index) const;
    /// The end of a sentence. A sentence without a valid end lasts until the next one begins, or
    /// until the end of the recording (`nullopt`).
    std::optional<double> sentenceEnd(std::size_t index) const;
    std::optional<std::size_t> activeSentenceIndex(double time) const {
        return timeline_.activeSentenceIndex(time);
    }

    /// The words of a sentence that have times, in order.
    std::vector<SentenceToken> tokens(std::size_t index) const;
    /// The word that is heard: the last that has begun.
    static std::optional<std::size_t> activeTokenIndex(const std::vector<SentenceToken>& tokens,
                                                       double time);

  private:
    std::pair<std::size_t, std::size_t> wordsOf(std::size_t sentence) const;

    HistoryWordTimeline timeline_; ///< has sentences if it has words
    /// The index of the first word of each committed row.
    std::unordered_map<UUID, std::size_t> firstWords_;
};

} // namespace tessarune
