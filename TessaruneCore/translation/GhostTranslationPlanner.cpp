#include "TessaruneCore/translation/GhostTranslationPlanner.h"

#include "TessaruneCore/text/Text.h"

#include <vector>

namespace tessarune::GhostTranslationPlanner {

namespace {
std::string_view lastWithText(const std::vector<std::string>& pieces) {
    for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
        const auto text = Text::trimmed(*piece);
        if (!text.empty())
            return text;
    }
    return {};
}
} // namespace

std::optional<std::string> latestCandidate(const BoundaryObservation& observation,
                                           std::size_t leastWords) {
    auto candidate = lastWithText(observation.decision.leading);
    if (candidate.empty())
        candidate = lastWithText(observation.decision.softPieces);
    if (candidate.empty() || Text::countOfBlankSeparated(candidate) < leastWords)
        return std::nullopt;
    return std::string(candidate);
}

std::string normalizedKey(std::string_view text) {
    std::string spaced;
    for (const auto codePoint : Text::codePoints(Text::lowercased(text)))
        Text::append(spaced, Text::isAlphanumeric(codePoint) ? codePoint : U' ');
    return Text::joined(Text::splitAtBlanks(spaced), " ");
}

bool matches(std::string_view source, std::string_view target, std::string_view currentSource,
             std::string_view currentTarget) {
    return Text::equal(target, currentTarget) &&
           Text::equal(normalizedKey(source), normalizedKey(currentSource));
}

} // namespace tessarune::GhostTranslationPlanner
