#include "Tessarune/speech/AppleFinalReconciler.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <numeric>

namespace tessarune::AppleFinalReconciler {

namespace {

using Candidate = AppleFinalReconcileCandidate;
using Decision = AppleFinalReconcileDecisionRecord::Decision;

/// A final that ends at most this many seconds after `suppressedFinalsUntilAudioTime` is dropped.
constexpr double replacementWindowTolerance = 0.12;
constexpr std::size_t previewLimit = 220;

/// The comparison of a final with its last partial.
struct Comparison {
    double similarity = 0;
    std::optional<double> wordRatio;
    std::vector<std::string> reasons;
    bool prefersLastPartial = false;
};

bool requestsAlternatives(const Candidate& final) {
    const auto& options = final.requestedSpeechOptions;
    return std::find(options.begin(), options.end(), "reporting.alternativeTranscriptions") !=
           options.end();
}

AppleFinalReconcileOutcome outcome(const Candidate& final,
                                   const std::optional<Candidate>& lastPartial, Decision decision,
                                   std::string text, std::vector<std::string> reasons) {
    AppleFinalReconcileOutcome result;
    auto& record = result.record;
    record.sequence = final.sequence;
    record.receivedAt = final.receivedAt;
    record.decision = decision;
    record.reasons = std::move(reasons);
    record.final = final;
    record.lastPartial = lastPartial;
    record.outputTextHash = fnv1a64Hex(text);
    record.outputTextPreview = truncated(text, previewLimit);
    record.outputCharacterCount = static_cast<std::int64_t>(Text::length(text));
    record.outputWordCount = static_cast<std::int64_t>(Text::countOfWhiteSpaceSeparated(text));
    record.alternativeTranscriptionsRequested = requestsAlternatives(final);
    result.text = std::move(text);
    return result;
}

AppleFinalReconcileOutcome dropped(const Candidate& final,
                                   const std::optional<Candidate>& lastPartial,
                                   std::optional<double> mark, std::vector<std::string> reasons) {
    auto result =
        outcome(final, lastPartial, Decision::dropSuppressedFinal, "", std::move(reasons));
    result.record.suppressedFinalsUntilAudioTime = mark;
    return result;
}

AppleFinalReconcileOutcome accepted(const Candidate& final,
                                    const std::optional<Candidate>& lastPartial,
                                    std::vector<std::string> reasons) {
    if (reasons.empty())
        reasons.emplace_back("finalAccepted");
    auto result = outcome(final, lastPartial, Decision::useFinal, final.text, std::move(reasons));
    result.selectedAudioStartSeconds = final.audioStartSeconds;
    result.selectedAudioEndSeconds = final.audioEndSeconds;
    result.shouldKeepFinalWordTimings = true;
    result.record.shouldKeepFinalWordTimings = true;
    return result;
}

AppleFinalReconcileOutcome replaced(const Candidate& final, const Candidate& partial,
                                    std::vector<std::string> reasons) {
    constexpr double fragmentTolerance = 0.2; // seconds
    if (reasons.empty())
        reasons.emplace_back("lastPartialPreferred");
    std::optional<double> mark;
    if (partial.audioEndSeconds && final.audioEndSeconds &&
        *final.audioEndSeconds + fragmentTolerance < *partial.audioEndSeconds) {
        reasons.emplace_back("suppressFollowingFinalFragments");
        mark = partial.audioEndSeconds;
    }
    auto result =
        outcome(final, partial, Decision::useLastPartial, partial.text, std::move(reasons));
    result.selectedAudioStartSeconds =
        partial.audioStartSeconds ? partial.audioStartSeconds : final.audioStartSeconds;
    result.selectedAudioEndSeconds =
        partial.audioEndSeconds ? partial.audioEndSeconds : final.audioEndSeconds;
    result.record.suppressedFinalsUntilAudioTime = mark;
    return result;
}

bool hasCollapsed(const Candidate& final, const Candidate& partial, double similarity) {
    if (partial.wordCount < 4 || similarity >= 0.78)
        return false;
    const auto threshold = static_cast<std::int64_t>(static_cast<double>(partial.wordCount) * 0.35);
    return threshold >= 2 ? final.wordCount <= threshold : final.wordCount < 3;
}

bool startsWithJunk(std::string_view text) {
    const std::string_view trimmed = Text::trimmed(text);
    return !trimmed.empty() && !Text::isAlphanumeric(Text::firstCodePoint(trimmed));
}

Comparison compare(const Candidate& final, const Candidate& partial) {
    Comparison result;
    result.similarity = normalizedSimilarity(final.text, partial.text);
    if (partial.wordCount >= 1)
        result.wordRatio =
            static_cast<double>(final.wordCount) / static_cast<double>(partial.wordCount);

    const std::size_t useful = usefulScalarCount(final.text);
    const auto confidence = final.minConfidence ? final.minConfidence : final.avgConfidence;
    const auto confidenceIsAtMost = [&](double bound) {
        return confidence && *confidence <= bound;
    };
    const auto holds = [&](bool condition, const char* reason) {
        if (condition)
            result.reasons.emplace_back(reason);
        return condition;
    };

    const bool punctuationOnly = holds(!final.text.empty() && useful == 0, "finalPunctuationOnly");
    const bool garbled =
        holds(final.wordCount < 3 && useful < 5 && punctuationRatio(final.text) >= 0.55,
              "finalLooksGarbled");
    const bool collapsed =
        holds(hasCollapsed(final, partial, result.similarity), "finalCollapsedAgainstLastPartial");
    const bool junkStart = holds(startsWithJunk(final.text), "finalStartsWithJunkPunctuation");
    const bool punctuationRun = holds(hasLongPunctuationRun(final.text), "finalLongPunctuationRun");
    const bool repeated = holds(hasRepeatedOpeningToken(final.text), "finalRepeatedOpeningToken");
    const bool dissimilar = holds(result.similarity < 0.75, "finalLowSimilarityToLastPartial");
    const bool extremelyLow = holds(confidenceIsAtMost(0.05), "finalExtremelyLowConfidence");
    const bool veryLow = holds(confidenceIsAtMost(0.12), "finalVeryLowConfidence");
    const bool alternatives = holds(requestsAlternatives(final), "alternativeTranscriptionsMode");
    const bool low = confidenceIsAtMost(0.5);

    const bool partialUsable = usefulScalarCount(partial.text) >= 6 && partial.wordCount >= 2;
    result.prefersLastPartial =
        partialUsable && (punctuationOnly || garbled || (collapsed && low) ||
                          (collapsed && alternatives && final.wordCount < 4) ||
                          (extremelyLow && (junkStart || punctuationRun || repeated)) ||
                          (extremelyLow && dissimilar) ||
                          (veryLow && final.wordCount < 3 && partial.wordCount >= 3));
    return result;
}

bool isUseless(char32_t codePoint) {
    return !Text::isWhiteSpace(codePoint) && !Text::isAlphanumeric(codePoint);
}

} // namespace

AppleFinalReconcileOutcome reconcile(const Candidate& final,
                                     const std::optional<Candidate>& lastPartial,
                                     std::optional<double> suppressedFinalsUntilAudioTime) {
    const auto mark = suppressedFinalsUntilAudioTime;
    if (isPunctuationOnly(final.text))
        return dropped(final, lastPartial, mark,
                       {"finalPunctuationOnly", "dropPunctuationOnlyFinal"});
    if (mark && final.audioEndSeconds &&
        *mark + replacementWindowTolerance >= *final.audioEndSeconds)
        return dropped(final, lastPartial, mark, {"insideLastPartialReplacementWindow"});
    if (!lastPartial)
        return accepted(final, lastPartial, {"noLastPartial"});

    Comparison comparison = compare(final, *lastPartial);
    auto result = comparison.prefersLastPartial
                      ? replaced(final, *lastPartial, std::move(comparison.reasons))
                      : accepted(final, lastPartial, std::move(comparison.reasons));
    result.record.finalLastPartialSimilarity = comparison.similarity;
    result.record.finalToLastPartialWordRatio = comparison.wordRatio;
    return result;
}

std::string normalized(std::string_view text) {
    std::string kept;
    for (const char32_t codePoint : Text::codePoints(Text::lowercased(text))) {
        if (!isUseless(codePoint))
            Text::append(kept, codePoint);
    }
    return Text::joined(Text::splitOnWhiteSpace(kept), " ");
}

std::size_t usefulScalarCount(std::string_view text) {
    const auto codePoints = Text::codePoints(text);
    return static_cast<std::size_t>(std::count_if(
        codePoints.begin(), codePoints.end(), [](char32_t c) { return Text::isAlphanumeric(c); }));
}

bool isPunctuationOnly(std::string_view text) {
    return !Text::trimmed(text).empty() && usefulScalarCount(text) == 0;
}

double punctuationRatio(std::string_view text) {
    const auto codePoints = Text::codePoints(text);
    const auto visible = std::count_if(codePoints.begin(), codePoints.end(),
                                       [](char32_t c) { return !Text::isWhiteSpace(c); });
    const auto useless = std::count_if(codePoints.begin(), codePoints.end(), isUseless);
    return visible > 0 ? static_cast<double>(useless) / static_cast<double>(visible) : 0;
}

bool hasLongPunctuationRun(std::string_view text) {
    const auto codePoints = Text::codePoints(text);
    return std::adjacent_find(codePoints.begin(), codePoints.end(), [](char32_t a, char32_t b) {
               return isUseless(a) && isUseless(b);
           }) != codePoints.end();
}

bool hasRepeatedOpeningToken(std::string_view text) {
    const std::string words = normalized(text);
    const auto tokens = Text::splitOnWhiteSpace(words);
    return tokens.size() >= 3 && Text::equal(tokens[0], tokens[1]) &&
           Text::equal(tokens[1], tokens[2]);
}

std::size_t levenshteinDistance(const std::vector<std::string_view>& a,
                                const std::vector<std::string_view>& b) {
    // Canonical forms let the loops compare bytes: each character is compared hundreds of times.
    const auto canonical = [](const std::vector<std::string_view>& characters) {
        std::vector<std::string> result;
        result.reserve(characters.size());
        for (const auto character : characters)
            result.push_back(Text::canonical(character));
        return result;
    };
    const auto rows = canonical(a);
    const auto columns = canonical(b);

    std::vector<std::size_t> previous(columns.size() + 1);
    std::vector<std::size_t> current(columns.size() + 1);
    std::iota(previous.begin(), previous.end(), std::size_t{0});
    for (std::size_t i = 0; i < rows.size(); ++i) {
        current[0] = i + 1;
        for (std::size_t j = 0; j < columns.size(); ++j) {
            const std::size_t substitution = previous[j] + (rows[i] == columns[j] ? 0 : 1);
            current[j + 1] = std::min({substitution, previous[j + 1] + 1, current[j] + 1});
        }
        std::swap(previous, current);
    }
    return previous.back();
}

double normalizedSimilarity(std::string_view a, std::string_view b) {
    constexpr std::size_t comparedCharacters = 240;
    const std::string first = normalized(a);
    const std::string second = normalized(b);
    const auto firstCharacters = Text::characters(Text::prefix(first, comparedCharacters));
    const auto secondCharacters = Text::characters(Text::prefix(second, comparedCharacters));
    if (firstCharacters.empty() || secondCharacters.empty())
        return firstCharacters.empty() && secondCharacters.empty() ? 1.0 : 0.0;
    const auto distance = levenshteinDistance(firstCharacters, secondCharacters);
    const auto longer = std::max(firstCharacters.size(), secondCharacters.size());
    return std::max(1.0 - static_cast<double>(distance) / static_cast<double>(longer), 0.0);
}

std::string truncated(std::string_view text, std::size_t limit) {
    const std::string_view kept = Text::prefix(text, limit);
    if (kept.size() == text.size())
        return std::string(text);
    const std::size_t cut = Text::length(text) - limit;
    return std::string(kept) + "...<truncated " + std::to_string(cut) + " chars>";
}

} // namespace tessarune::AppleFinalReconciler
