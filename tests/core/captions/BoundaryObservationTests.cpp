#include "TessaruneCore/captions/BoundarySummary.h"
#include "TessaruneCore/captions/LiveBoundaryDecisionHandler.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

BoundaryObservation observation(BoundaryDecision decision, BoundaryObservation::Phase phase = {}) {
    return {phase, 1, "text", std::move(decision)};
}

TEST(BoundarySummaryTests, PreviewsTheMostSettledText) {
    const std::string longest(72, 'x'); // a longer text is truncated
    const struct {
        BoundaryObservation observation;
        std::string expected;
    } cases[] = {
        {observation({}), "partial · soft 0 · hard 0 · lead 0 · reason -"},
        {observation({.softPieces = {"s"}, .hardPieces = {"h1", " h2 "}, .leading = {"l"}}),
         "partial · soft 1 · hard 2 · lead 1 · reason - · “h2”"},
        {observation({.softPieces = {"s1", "s2"}, .leading = {"l"}}),
         "partial · soft 2 · hard 0 · lead 1 · reason - · “s2”"},
        {observation({.leading = {"l1", "l2"}, .tail = "t"}),
         "partial · soft 0 · hard 0 · lead 2 · reason - · “l2”"},
        {observation({.tail = longest,
                      .reasons = {BoundaryReason::engineFinal(), BoundaryReason::maxWords(28)}},
                     BoundaryObservation::Phase::final),
         "final · soft 0 · hard 0 · lead 0 · engineFinal, maxWords:28 · “" + longest + "”"},
        {observation({.tail = longest + "é"}),
         "partial · soft 0 · hard 0 · lead 0 · reason - · “" + longest + "...”"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(BoundarySummary::text(c.observation), c.expected);
}

TEST(LiveBoundaryDecisionHandlerTests, AsksForAnEarlyFinalWhenEnoughWordsAreComplete) {
    using Reasons = std::vector<BoundaryReason>;
    const Reasons stop = {BoundaryReason::punctuation('.')};
    const Reasons longRun = {BoundaryReason::punctuation('.'), BoundaryReason::maxWords(28)};
    const struct {
        BoundaryDecision decision;
        std::optional<std::string> expected;
    } cases[] = {
        {{.softPieces = {"c d"}, .leading = {"a b."}, .reasons = stop},
         "boundary.terminalPunctuation.4"},
        {{.leading = {"one", "two"}, .reasons = stop}, std::nullopt},
        {{.leading = {"one"}, .reasons = longRun}, "boundary.maxWords.1"},
        {{.hardPieces = {"a b c d"}, .tail = "e f g", .reasons = longRun}, std::nullopt},
        {{.leading = {"a b c d"}, .reasons = {}}, std::nullopt},
        {{.leading = {"a b c d"},
          .reasons = {BoundaryReason::maxCharacters(48), BoundaryReason::clausePunctuation(',')}},
         std::nullopt},
    };
    using LiveBoundaryDecisionHandler::engineFinalizationReason;
    for (const auto& c : cases) {
        EXPECT_EQ(engineFinalizationReason(observation(c.decision), true), c.expected);
        EXPECT_EQ(engineFinalizationReason(observation(c.decision), false), std::nullopt);
        EXPECT_EQ(engineFinalizationReason(
                      observation(c.decision, BoundaryObservation::Phase::final), true),
                  std::nullopt);
    }
}

} // namespace
} // namespace tessarune
