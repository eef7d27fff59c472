#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/segmentation/StabilityKeyList.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Decides which sentences of a growing partial are stable. A sentence that stays unchanged at its
/// position for `freezeStableSeconds` is frozen without waiting for the recogniser's final, and is
/// never reopened. Changes of case, spacing and punctuation are ignored. Sentences freeze in
/// reading order.
///
/// Confined to its owner's thread. Times are seconds on the caller's clock; if that clock runs
/// backwards, freezing is delayed.
class SentencePipeline final {
  public:
    explicit SentencePipeline(double stableSeconds = 0.6) : freezeStableSeconds(stableSeconds) {}

    struct PartialResult {
        std::vector<std::string> newlyFrozen; ///< frozen by this call
        std::vector<std::string> leading;     ///< complete sentences, not frozen yet
        std::string tail;                     ///< the unfinished end

        bool operator==(const PartialResult&) const;
    };

    struct Freeze {
        std::vector<std::string> frozen; ///< frozen by this call
        std::size_t liveStartIndex = 0;  ///< the index of the first sentence that is not frozen

        bool operator==(const Freeze&) const;
    };

    /// How to cut texts, and whether to freeze sentences.
    struct Options {
        bool segment = true;
        bool freeze = true;
        bool clauseLevel = false;
        std::int64_t maxUnpunctuatedWords = SentenceSegmenter::maxUnpunctuatedWords;
        BoundaryUnit boundaryUnit = BoundaryUnit::words;
    };

    /// `cumulativePartials`: see `frozenOverlapPrefixCount`.
    PartialResult ingestPartial(std::string_view text, const Options& options, double now,
                                bool cumulativePartials = false);

    /// The sentences of a final that were not frozen from partials before.
    std::vector<std::string> ingestFinal(std::string_view text, const Options& options) const;

    /// Updates stability with the leading sentences of a partial and returns what froze.
    Freeze advanceFreeze(const std::vector<std::string>& leading, double now,
                         bool cumulativePartials = false);

    /// How many sentences at the start of `current` are frozen already: the length of its longest
    /// prefix that is a suffix of `frozen`. Cumulative partials repeat the utterance from its
    /// start; for these, sentence i of `current` is frozen if `frozen` has a sentence i, whatever
    /// their texts.
    static std::size_t frozenOverlapPrefixCount(const std::vector<std::string>& current,
                                                const std::vector<std::string>& frozen,
                                                bool cumulativePartials = false);

    /// How many leading pieces of a final were frozen from partials before.
    std::size_t frozenPrefixCount(const std::vector<std::string>& pieces) const;

    static std::string normalizeForStability(std::string_view text);

    /// Forgets all sentences and keeps `freezeStableSeconds`.
    void reset();

    /// Keys of the sentences frozen since the last reset, in reading order.
    const std::vector<std::string>& frozenSentenceNorms() const { return frozenSentenceNorms_; }
    /// Keys of the last partial's leading sentences, by position.
    const std::vector<std::string>& prevLeadingNorm() const { return leadingKeys_.keys(); }
    /// For each position, the time since which its key is unchanged.
    const std::vector<double>& leadingStableSince() const { return leadingStableSince_; }

    /// How long a sentence must stay unchanged; may be changed between calls.
    double freezeStableSeconds;

  private:
    std::vector<std::string> frozenSentenceNorms_;
    StabilityKeyList leadingKeys_;
    std::vector<double> leadingStableSince_;
};

} // namespace tessarune
