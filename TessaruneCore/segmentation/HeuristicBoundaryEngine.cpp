#include "TessaruneCore/segmentation/HeuristicBoundaryEngine.h"

#include "TessaruneCore/segmentation/SentencePunctuation.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_set>
#include <utility>

namespace tessarune {

namespace {

/// A self-segmenting recogniser needs no early cuts unless the configuration asks for them.
bool isFreezeActive(const BoundaryContext& context) {
    return context.freeze && (!context.caps.selfSegments || context.earlyCutSelfSegmenting);
}

std::int64_t countOfUnits(std::string_view piece, BoundaryUnit unit) {
    return static_cast<std::int64_t>(unit == BoundaryUnit::characters
                                         ? Text::countOfNonWhiteSpace(piece)
                                         : Text::countOfWhiteSpaceSeparated(piece));
}

std::optional<BoundaryReason> pieceReason(std::string_view piece, const BoundaryContext& context,
                                          bool clauseAllowed) {
    if (const auto mark = SentencePunctuation::endMark(piece)) {
        if ((mark->traits & SentencePunctuation::terminal) != 0)
            return BoundaryReason::punctuation(mark->character);
        if (clauseAllowed)
            return BoundaryReason::clausePunctuation(mark->character);
    }
    const std::int64_t limit = context.maxUnpunctuatedWords;
    if (countOfUnits(piece, context.boundaryUnit) < limit)
        return std::nullopt;
    return context.boundaryUnit == BoundaryUnit::characters ? BoundaryReason::maxCharacters(limit)
                                                            : BoundaryReason::maxWords(limit);
}

/// Searches a few keys linearly, which is faster than building a set. Uses a set for many keys; a
/// long text without punctuation, which is cut by length, can have many.
class KeySet {
  public:
    explicit KeySet(std::span<const std::string> keys) : keys_(keys) {
        if (keys.size() > linearLimit)
            set_.insert(keys.begin(), keys.end());
    }
    bool contains(std::string_view key) const {
        return keys_.size() > linearLimit
                   ? set_.contains(key)
                   : std::find(keys_.begin(), keys_.end(), key) != keys_.end();
    }

  private:
    static constexpr std::size_t linearLimit = 16;
    std::span<const std::string> keys_;
    std::unordered_set<std::string_view> set_;
};

/// Distinct reasons in the order of first occurrence.
class ReasonList {
  public:
    explicit ReasonList(const BoundaryContext& context) : context_(context) {}

    void add(const BoundaryReason& reason) {
        if (std::find(reasons_.begin(), reasons_.end(), reason) == reasons_.end())
            reasons_.push_back(reason);
    }
    void addReasonsOf(const std::vector<std::string>& pieces, bool clauseAllowed) {
        for (const auto& piece : pieces) {
            if (const auto reason = pieceReason(piece, context_, clauseAllowed))
                add(*reason);
        }
    }
    std::vector<BoundaryReason> take() { return std::move(reasons_); }

  private:
    const BoundaryContext& context_;
    std::vector<BoundaryReason> reasons_;
};

} // namespace

void HeuristicBoundaryEngine::reset() {
    pipeline_.reset();
}

BoundaryDecision HeuristicBoundaryEngine::ingestPartial(std::string_view text,
                                                        const BoundaryContext& context,
                                                        double now) {
    pipeline_.freezeStableSeconds = context.freezeStableSeconds;
    BoundaryDecision decision;
    if (!context.segment) {
        decision.tail = text;
        return decision;
    }
    cuts_.cut(text, {.sentences = !context.clauseLevel,
                     .clauses = context.clauseLevel || context.softClauseLevel,
                     .limit = context.maxUnpunctuatedWords,
                     .boundaryUnit = context.boundaryUnit});
    const auto& pieces = context.clauseLevel ? cuts_.clauses() : cuts_.sentences();
    if (!pieces.empty()) {
        decision.leading.assign(pieces.begin(), pieces.end() - 1);
        decision.tail = pieces.back();
    }
    std::size_t frozenBefore = 0;
    if (isFreezeActive(context)) {
        auto freeze = pipeline_.advanceFreeze(decision.leading, now);
        frozenBefore = freeze.liveStartIndex - freeze.frozen.size();
        decision.leading.erase(decision.leading.begin(),
                               decision.leading.begin() +
                                   static_cast<std::ptrdiff_t>(freeze.liveStartIndex));
        decision.hardPieces = std::move(freeze.frozen);
    }
    if (context.softClauseLevel) {
        if (!isFreezeActive(context))
            leadingKeys_.assign(decision.leading);
        decision.softPieces =
            softPieces(isFreezeActive(context) ? pipeline_.prevLeadingNorm() : leadingKeys_.keys(),
                       frozenBefore);
    }

    ReasonList reasons(context);
    if (!decision.hardPieces.empty())
        reasons.add(BoundaryReason::localAgreement());
    reasons.addReasonsOf(decision.softPieces, true);
    reasons.addReasonsOf(decision.hardPieces, context.clauseLevel);
    reasons.addReasonsOf(decision.leading, context.clauseLevel);
    decision.reasons = reasons.take();
    return decision;
}

/// Returns all clauses except the last and those whose key is excluded. `excludedKeys` before the
/// index `firstExcluded` belong to sentences frozen earlier and exclude nothing.
std::vector<std::string>
HeuristicBoundaryEngine::softPieces(const std::vector<std::string>& excludedKeys,
                                    std::size_t firstExcluded) {
    std::vector<std::string> soft;
    const auto& clauses = cuts_.clauses();
    if (clauses.empty())
        return soft;
    const std::span completeClauses(clauses.data(), clauses.size() - 1);
    clauseKeys_.assign(completeClauses);
    const KeySet excluded{std::span(excludedKeys).subspan(firstExcluded)};
    for (std::size_t i = 0; i < completeClauses.size(); ++i) {
        if (!excluded.contains(clauseKeys_.keys()[i]))
            soft.emplace_back(completeClauses[i]);
    }
    return soft;
}

BoundaryDecision HeuristicBoundaryEngine::ingestFinal(std::string_view text,
                                                      const BoundaryContext& context) {
    pipeline_.freezeStableSeconds = context.freezeStableSeconds;
    BoundaryDecision decision;
    if (context.segment) {
        decision.hardPieces = SentenceSegmenter::pieces(
            text, context.clauseLevel, context.maxUnpunctuatedWords, context.boundaryUnit);
        if (isFreezeActive(context)) {
            const auto frozenCount =
                static_cast<std::ptrdiff_t>(pipeline_.frozenPrefixCount(decision.hardPieces));
            decision.hardPieces.erase(decision.hardPieces.begin(),
                                      decision.hardPieces.begin() + frozenCount);
        }
    } else if (!text.empty()) {
        decision.hardPieces.emplace_back(text);
    }

    ReasonList reasons(context);
    if (!decision.hardPieces.empty())
        reasons.add(BoundaryReason::engineFinal());
    reasons.addReasonsOf(decision.hardPieces, context.clauseLevel);
    decision.reasons = reasons.take();
    return decision;
}

} // namespace tessarune
