#include "TessaruneCore/captions/UtteranceTracker.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Texts = std::vector<std::string>;
using Counts = std::vector<std::int64_t>;

TEST(UtteranceTrackerTests, WordTimesStayWithTheirPositions) {
    UtteranceTracker tracker;
    tracker.alignWords("one  two three", 1);
    tracker.wordRevealed = {std::nullopt, 1.5, 1.7};
    tracker.alignWords("One 2", 2);
    EXPECT_EQ(tracker.wordFirstSeen, (std::vector<double>{1, 1}));
    tracker.alignWords("one two three\tfour five", 3);
    EXPECT_EQ(tracker.wordFirstSeen, (std::vector<double>{1, 1, 3, 3}));
    EXPECT_EQ(tracker.wordRevealed,
              (std::vector<std::optional<double>>{std::nullopt, 1.5, std::nullopt, std::nullopt}));
}

TEST(UtteranceTrackerTests, CountsChangesOfLeadingSentences) {
    UtteranceTracker tracker;
    const auto observe = [&](const Texts& leading, std::size_t frozen) {
        return tracker.observe("", leading, "", frozen, 0);
    };
    observe({"a", "b\u00E9"}, 0);
    EXPECT_EQ(tracker.leadingChangeCounts, (Counts{0, 0}));
    observe({"A", "be\u0301"}, 0);
    observe({"a", "b", "c"}, 0);
    EXPECT_EQ(tracker.leadingChangeCounts, (Counts{2, 1, 0}));
    // The first sentence froze; the others move up and are compared with their own former texts.
    EXPECT_EQ(observe({"b", "C"}, 1), Counts{2});
    EXPECT_EQ(tracker.leadingChangeCounts, (Counts{1, 1}));
    observe({"b"}, 0);
    EXPECT_EQ(tracker.leadingChangeCounts, Counts{1});
    EXPECT_EQ(observe({}, 2), (Counts{1, 0}));
    EXPECT_EQ(observe({"new"}, 0), Counts());
    EXPECT_EQ(tracker.leadingChangeCounts, Counts{0});
}

TEST(UtteranceTrackerTests, GrowthOfTheTailIsNoRewrite) {
    const std::pair<const char*, std::int64_t> steps[] = {
        {"hello wor", 0}, {"hello word", 0},    {"hello world", 1},   {"", 2},
        {"cafe", 2},      {"cafe\u0301 au", 3}, {"caf\u00E9 au l", 3}};
    UtteranceTracker tracker;
    for (const auto& [tail, rewrites] : steps) {
        tracker.observe("", {}, tail, 0, 0);
        EXPECT_EQ(tracker.tailChangeCount, rewrites) << tail;
    }
}

} // namespace
} // namespace tessarune
