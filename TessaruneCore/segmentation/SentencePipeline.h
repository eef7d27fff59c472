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

/// Decides which sentences of a growing guess are settled: one that has stood unchanged, in the
/// same place, for `freezeStableSeconds` is frozen before the recogniser is final, and is never
/// reopened. A change of case, spacing or punctuation alone does not count as a change.
///
/// Confined to its owner's thread. Times are seconds on the time base of the caller's `now`; a
/// clock that runs backwards only delays freezing.
class SentencePipeline final {
  public:
    explicit SentencePipeline(double stableSeconds = 0.6) : freezeStableSeconds(stableSeconds) {}

    struct PartialResult {
        std::vector<std::string> newlyFrozen; ///< fixed by this call
        std::vector<std::string> leading;     ///< complete by punctuation, still open
        std::string tail;                     ///< the unfinished rest

        bool operator==(const PartialResult&) const;
    };

    struct Freeze {
        std::vector<std::string> frozen; ///< fixed by this call
        std::size_t liveStartIndex = 0;  ///< sentences before it are fixed, now or earlier

        bool operator==(const Freeze&) const;
    };

    /// How a text is cut, and whether it is frozen.
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

    /// The sentences of a final that were not frozen from partials. Changes nothing.
    std::vector<std::string> ingestFinal(std::string_view text, const Options& options) const;

    /// One step of the freeze over the leading sentences of a partial.
    Freeze advanceFreeze(const std::vector<std::string>& leading, double now,
                         bool cumulativePartials = false);

    /// How many first elements of `current` are covered by the end of `frozen`: the longest match.
    /// If partials always restate everything since the start, the two align by position instead.
    static std::size_t frozenOverlapPrefixCount(const std::vector<std::string>& current,
                                                const std::vector<std::string>& frozen,
                                                bool cumulativePartials = false);

    /// How many first pieces of a final were frozen from partials before.
    std::size_t frozenPrefixCount(const std::vector<std::string>& pieces) const;

    static std::string normalizeForStability(std::string_view text);

    /// Forgets all sentences; `freezeStableSeconds` stays.
    void reset();

    /// Keys of the sentences frozen since the last reset, in order.
    const std::vector<std::string>& frozenSentenceNorms() const { return frozenSentenceNorms_; }
    /// Keys of the previous partial's leading sentences, by position.
    const std::vector<std::string>& prevLeadingNorm() const { return leadingKeys_.keys(); }
    /// For each position, since when its key has been unchanged.
    const std::vector<double>& leadingStableSince() const { return leadingStableSince_; }

    /// How long a sentence must stand; may be changed between calls.
    double freezeStableSeconds;

  private:
    std::vector<std::string> frozenSentenceNorms_;
    StabilityKeyList leadingKeys_;
    std::vector<double> leadingStableSince_;
};

} // namespace tessarune
