#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <algorithm>
#include <array>

namespace tessarune {

bool CommittedTranslationUnit::operator==(const CommittedTranslationUnit& other) const {
    return translationUnitID == other.translationUnitID && segmentIDs == other.segmentIDs &&
           resultSegmentID == other.resultSegmentID && committedAt == other.committedAt &&
           Text::equal(sourceText, other.sourceText);
}

namespace CommittedTranslationUnitPlanner {

namespace {

/// A group that reaches one of these limits is complete without an end of a sentence.
constexpr std::size_t wordLimit = 28;
constexpr std::size_t characterLimit = 180;
constexpr double durationLimit = 10.0; // seconds

constexpr std::array<std::string_view, 6> terminalPunctuation{".", "?", "!", "。", "？", "！"};
constexpr std::array<std::string_view, 11> closingPunctuation{"\"", "'",  "”",  "’",  ")", "]",
                                                              "}",  "）", "】", "」", "』"};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& set, std::string_view character) {
    return std::find(set.begin(), set.end(), character) != set.end();
}

/// The group under construction.
struct Group {
    std::vector<UUID> segmentIDs;
    std::string joined;
    std::optional<double> committedAt;
    std::optional<double> firstStart;
    std::optional<double> lastEnd;

    void add(const CaptionSegment& segment, std::string_view text) {
        if (!joined.empty())
            joined += ' ';
        joined += text;
        if (!committedAt)
            committedAt = segment.committedAt;
        if (!firstStart)
            firstStart = segment.startedAt;
        if (segment.endedAt) {
            lastEnd = segment.endedAt;
        } else if (segment.committedAt) {
            lastEnd = segment.committedAt;
        }
    }

    bool isComplete() const {
        if (hasTerminalPunctuation(joined) && hasTranslatableContent(joined))
            return true;
        if (Text::countOfWhiteSpaceSeparated(joined) >= wordLimit)
            return true;
        if (Text::length(Text::trimmed(joined)) >= characterLimit)
            return true;
        return lastEnd && firstStart && *firstStart <= *lastEnd &&
               *lastEnd - *firstStart >= durationLimit;
    }

    CommittedTranslationUnit unit(const UUIDSource& newID) const {
        return {newID(), segmentIDs, segmentIDs.back(), joined, committedAt};
    }
};

} // namespace

std::optional<CommittedTranslationUnit> nextPendingUnit(std::span<const CaptionSegment> segments,
                                                        bool forceTail, const UUIDSource& newID) {
    const auto first = TranslationSegmentMutator::nextPendingIndex(segments);
    if (!first)
        return std::nullopt;
    Group group;
    for (const auto& segment : segments.subspan(*first)) {
        // A group never spans a row that already has a result.
        if (!TranslationSegmentMutator::isPending(segment))
            break;
        group.segmentIDs.push_back(segment.id);
        const auto text = Text::trimmed(segment.sourceText);
        if (text.empty())
            continue;
        group.add(segment, text);
        if (group.isComplete())
            return group.unit(newID);
    }
    // A unit without text tells the caller that blank rows need no translation.
    if (group.joined.empty() || forceTail)
        return group.unit(newID);
    return std::nullopt;
}

bool hasTerminalPunctuation(std::string_view text) {
    const auto characters = Text::characters(Text::trimmed(text));
    const auto last = std::find_if(characters.rbegin(), characters.rend(), [](auto character) {
        return !contains(closingPunctuation, character);
    });
    return last != characters.rend() && contains(terminalPunctuation, *last);
}

bool hasTranslatableContent(std::string_view text) {
    const auto codePoints = Text::codePoints(text);
    return std::any_of(codePoints.begin(), codePoints.end(), Text::isAlphanumeric);
}

} // namespace CommittedTranslationUnitPlanner

} // namespace tessarune
