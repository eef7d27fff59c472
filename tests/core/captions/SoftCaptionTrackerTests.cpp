#include "TessaruneCore/captions/SoftCaptionTracker.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Texts = std::vector<std::string>;

struct Step {
    double now;
    Texts candidates;
    Texts visible;
    bool changed;
};

Texts texts(const std::vector<CaptionSegment>& segments) {
    Texts result;
    for (const auto& segment : segments)
        result.push_back(segment.sourceText);
    return result;
}

TEST(SoftCaptionTrackerTests, ShowsAClauseThatStaysUnchangedAtItsPosition) {
    const struct {
        const char* name;
        double stableSeconds;
        std::vector<Step> steps;
    } cases[] = {
        {"no stable time, no delay", 0, {{0, {"a b,", " ", " c,"}, {"a b,", "c,"}, true}}},
        {"a visible clause stays when the clock is set back",
         0.3,
         {{0, {"a"}, {}, false}, {0.35, {"a"}, {"a"}, true}, {0.1, {"a"}, {"a"}, false}}},
        {"a clause that disappears restarts its time",
         0.3,
         {{0, {"a", "b"}, {}, false},
          {0.1, {"a"}, {}, false},
          {0.4, {"a", "b"}, {"a"}, true},
          {0.5, {}, {}, true}}},
    };
    for (const auto& c : cases) {
        SoftCaptionTracker tracker;
        const auto ids = countingUUIDSource();
        for (const auto& step : c.steps) {
            const auto result =
                tracker.advance(step.candidates, true, c.stableSeconds, step.now, 1, ids);
            EXPECT_EQ(texts(result.segments), step.visible) << c.name << " at " << step.now;
            EXPECT_EQ(result.changed, step.changed) << c.name << " at " << step.now;
        }
    }
}

TEST(SoftCaptionTrackerTests, ASegmentKeepsTheIdAndFirstTimeOfItsRow) {
    SoftCaptionTracker tracker;
    const auto ids = countingUUIDSource();
    tracker.advance({"one two,"}, true, 0.3, 10, 7, ids);
    const auto result = tracker.advance({"One two"}, true, 0.3, 11, 8, ids);
    CaptionSegment expected;
    expected.id = countingUUIDSource()();
    expected.sourceText = "One two";
    expected.revision = 8;
    expected.state = CaptionSegmentState::final;
    expected.freezeKind = FreezeKind::soft;
    expected.startedAt = 10;
    expected.firstSeenAt = 10;
    EXPECT_EQ(result.segments, std::vector<CaptionSegment>{expected});
    tracker.advance({"three"}, true, 0, 12, 9, ids);
    EXPECT_NE(tracker.rows[0].id, expected.id) << "another clause gets another id";
}

} // namespace
} // namespace tessarune
