#include "TessaruneCore/captions/LiveBoundaryDecisionHandler.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tessarune::LiveBoundaryDecisionHandler {

namespace {

/// Fewer open words do not justify an early final at the end of a sentence.
constexpr std::size_t minOpenWords = 3;

template <typename Case>
bool contains(const std::vector<BoundaryReason>& reasons) {
    return std::any_of(reasons.begin(), reasons.end(),
                       [](const BoundaryReason& reason) { return reason.is<Case>(); });
}

/// The words of the leading sentences and the soft pieces. The sentences that this decision freezes
/// do not count, because they need no final.
std::size_t countOfOpenWords(const BoundaryDecision& decision) {
    std::vector<std::string> pieces = decision.leading;
    pieces.insert(pieces.end(), decision.softPieces.begin(), decision.softPieces.end());
    return Text::countOfWhiteSpaceSeparated(Text::joined(pieces, " "));
}

} // namespace

std::optional<std::string> engineFinalizationReason(const BoundaryObservation& observation,
                                                    bool appleAnalyzerEarlyFinalize) {
    const BoundaryDecision& decision = observation.decision;
    if (!appleAnalyzerEarlyFinalize || observation.phase != BoundaryObservation::Phase::partial)
        return std::nullopt;
    if (decision.leading.empty() && decision.softPieces.empty())
        return std::nullopt;
    const std::size_t words = countOfOpenWords(decision);
    if (contains<BoundaryReason::MaxWords>(decision.reasons))
        return "boundary.maxWords." + std::to_string(words);
    if (contains<BoundaryReason::Punctuation>(decision.reasons) && words >= minOpenWords)
        return "boundary.terminalPunctuation." + std::to_string(words);
    return std::nullopt;
}

} // namespace tessarune::LiveBoundaryDecisionHandler
