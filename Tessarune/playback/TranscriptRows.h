#pragma once

#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "Tessarune/history/HistoryWordTimeline.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarune {

struct ParagraphInfo {
    std::size_t id = 0; ///< the index of the row
    std::string text;

    bool operator==(const ParagraphInfo&) const = default;
};

struct BilingualBlockInfo {
    BilingualTranscriptBlock block;

    bool operator==(const BilingualBlockInfo&) const = default;
};

/// A word of a sentence that can be clicked, and that is highlighted while it is heard.
struct SentenceToken {
    std::size_t offset = 0; ///< bytes, in the sentence's text
    std::size_t length = 0; ///< in bytes
    double start = 0;       ///< seconds of the recording

    bool operator==(const SentenceToken&) const = default;
};

/// The shown rows of a transcript with their known times: row `i` shows sentence `i`, and a row
/// beyond the sentences has no time. A plain value; its functions are pure.
class TranscriptRows {
  public:
    using Sentence = HistoryWordTimeline::Sentence;

    TranscriptRows() = default;
    TranscriptRows(const HistoryTranscriptPayload& payload,
                   std::optional<HistoryWordTimeline> timeline);

    static std::vector<ParagraphInfo> computeParagraphInfos(std::string_view sourceText);
    static std::vector<BilingualBlockInfo>
    computeBilingualBlockInfos(std::string_view bilingualText);

    const std::vector<ParagraphInfo>& paragraphInfos() const { return paragraphInfos_; }
    const std::vector<BilingualBlockInfo>& bilingualBlockInfos() const {
        return bilingualBlockInfos_;
    }
    std::size_t sentenceCount() const { return timeline_.sentences.size(); }
    /// Null for a row without a time.
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

    std::vector<ParagraphInfo> paragraphInfos_;
    std::vector<BilingualBlockInfo> bilingualBlockInfos_;
    HistoryWordTimeline timeline_; ///< has sentences if it has words
    /// The index of the first word of each committed row.
    std::unordered_map<UUID, std::size_t> firstWords_;
};

} // namespace tessarune
