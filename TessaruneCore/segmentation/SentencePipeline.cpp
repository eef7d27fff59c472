#include "TessaruneCore/segmentation/SentencePipeline.h"

#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <utility>

namespace tessarune {

SentencePipeline::PartialResult SentencePipeline::ingestPartial(std::string_view text,
                                                                const Options& options, double now,
                                                                bool cumulativePartials) {
    PartialResult result;
    if (options.segment) {
        auto cut = SentenceSegmenter::segment(text, options.clauseLevel,
                                              options.maxUnpunctuatedWords, options.boundaryUnit);
        result.leading = std::move(cut.leading);
        result.tail = std::move(cut.live);
    } else {
        result.tail = text;
    }
    if (options.freeze) {
        Freeze freeze = advanceFreeze(result.leading, now, cumulativePartials);
        result.newlyFrozen = std::move(freeze.frozen);
        const auto frozenCount = std::min(result.leading.size(), freeze.liveStartIndex);
        result.leading.erase(result.leading.begin(),
                             result.leading.begin() + static_cast<std::ptrdiff_t>(frozenCount));
    }
    return result;
}

std::vector<std::string> SentencePipeline::ingestFinal(std::string_view text,
                                                       const Options& options) const {
    std::vector<std::string> pieces;
    if (options.segment) {
        pieces = SentenceSegmenter::pieces(text, options.clauseLevel, options.maxUnpunctuatedWords,
                                           options.boundaryUnit);
    } else {
        pieces.emplace_back(text);
    }
    if (options.freeze) {
        const auto frozenCount = static_cast<std::ptrdiff_t>(frozenPrefixCount(pieces));
        pieces.erase(pieces.begin(), pieces.begin() + frozenCount);
    }
    return pieces;
}

SentencePipeline::Freeze SentencePipeline::advanceFreeze(const std::vector<std::string>& leading,
                                                         double now, bool cumulativePartials) {
    leadingKeys_.assign(leading);
    const std::vector<std::string>& keys = leadingKeys_.keys();
    const std::size_t count = keys.size();
    const auto overlap = frozenOverlapPrefixCount(keys, frozenSentenceNorms_, cumulativePartials);

    leadingStableSince_.resize(count, now);
    for (std::size_t i = overlap; i < count; ++i) {
        if (!leadingKeys_.isUnchanged(i))
            leadingStableSince_[i] = now;
    }

    // Freeze in order: a later sentence never freezes before an earlier one.
    std::size_t end = overlap;
    while (end < count && leadingKeys_.isUnchanged(end) &&
           now - leadingStableSince_[end] >= freezeStableSeconds)
        ++end;
    Freeze result;
    result.liveStartIndex = end;
    for (std::size_t i = overlap; i < end; ++i) {
        result.frozen.push_back(leading[i]);
        frozenSentenceNorms_.push_back(keys[i]);
    }
    return result;
}

std::size_t SentencePipeline::frozenOverlapPrefixCount(const std::vector<std::string>& current,
                                                       const std::vector<std::string>& frozen,
                                                       bool cumulativePartials) {
    const std::size_t longest = std::min(current.size(), frozen.size());
    if (cumulativePartials)
        return longest;
    for (std::size_t count = longest; count > 0; --count) {
        if (std::equal(frozen.end() - static_cast<std::ptrdiff_t>(count), frozen.end(),
                       current.begin()))
            return count;
    }
    return 0;
}

std::size_t SentencePipeline::frozenPrefixCount(const std::vector<std::string>& pieces) const {
    if (frozenSentenceNorms_.empty())
        return 0;
    return frozenOverlapPrefixCount(SentenceStabilityKey::normalize(pieces), frozenSentenceNorms_);
}

std::string SentencePipeline::normalizeForStability(std::string_view text) {
    return SentenceStabilityKey::normalize(text);
}

void SentencePipeline::reset() {
    frozenSentenceNorms_.clear();
    leadingKeys_.clear();
    leadingStableSince_.clear();
}

bool SentencePipeline::PartialResult::operator==(const PartialResult& other) const {
    return Text::equal(newlyFrozen, other.newlyFrozen) && Text::equal(leading, other.leading) &&
           Text::equal(tail, other.tail);
}

bool SentencePipeline::Freeze::operator==(const Freeze& other) const {
    return Text::equal(frozen, other.frozen) && liveStartIndex == other.liveStartIndex;
}

} // namespace tessarune
