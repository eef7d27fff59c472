#include "TessaruneCore/replay/CaptionReplay.h"
#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

/// Each final ends at 9.88; a step other than p and f becomes a record of unknown kind.
CaptionReplay::Output replay(const std::string& script) {
    std::vector<ASREventRecord> records;
    for (const ScriptStep& step : scriptSteps(script)) {
        records.emplace_back(step.at, ASREvent::partial(step.text, 0, step.at));
        if (step.kind == 'f')
            records.back() = ASREventRecord(
                step.at, ASREvent::final(step.text, step.at, 9.88, EndpointReason::silence));
        else if (step.kind != 'p')
            records.back().kind = "note";
    }
    return CaptionReplay::run(records, CaptionCore::Config(true, true, false), {});
}

TEST(CaptionReplayTests, ReconstructsTheCaptionsOfALog) {
    struct Case {
        const char* name;
        const char* script;
        const char* transcript;
    };
    const Case cases[] = {
        {"an empty log", "", ""},
        {"only a final", "5 f One. Two.", "One. 🏁\nTwo. 🏁"},
        {"the pending partial is flushed at the end", "5 p a;5 p a b", "-- live --\na b"},
        {"open sentences, clauses and text in reading order",
         "5 p One two. if it rains today, we;5.4 p One two. if it rains today, we",
         "-- live --\nOne two.\nif it rains today,\nwe"},
        // The partial of 5.01 is delayed to 5.06, so its sentence is old enough to freeze at 5.7.
        {"a timer fires at its due time and not at the next record",
         "5 p x;5.01 p One two. x;5.7 p One two. x y", "One two. 🔒\n-- live --\nx y"},
        {"a record of unknown kind shows nothing and fires no timer",
         "5 p a;5.01 p b;9 n z;5.02 f Late.", "Late. 🏁"},
        {"records at negative times", "-3 p a;-2 p a b", "-- live --\na b"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(replay(c.script).transcript(), c.transcript) << c.name;
}

TEST(CaptionReplayTests, TimingsAreRelativeToTheFirstRecordAndIdsAreReproducible) {
    const auto script = "10 n ;10.25 p One two.;11 f One two. Three.";
    const auto output = replay(script);
    EXPECT_EQ(Text::joined(output.segmentTimings, "\n"),
              "「One two.」 firstSeen=+0.25 committed=+1.00 改写=0  词: One@+0.25 two.@+0.25\n"
              "「Three.」 firstSeen=+-0.12 committed=+1.00 改写=0  词: Three.@+-0.12");
    EXPECT_EQ(output.segments, replay(script).segments);
    EXPECT_EQ(output.wordEvents.size(), 2u);
}

} // namespace
} // namespace tessarune
