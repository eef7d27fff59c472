#include "TessaruneCore/replay/CaptionReplay.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Lines = std::vector<std::string>;

ASREventRecord partialAt(double t, std::string text) {
    return ASREventRecord(t, ASREvent::partial(std::move(text), 0, t));
}

ASREventRecord finalAt(double t, std::string text, double end) {
    return ASREventRecord(t, ASREvent::final(std::move(text), t, end, EndpointReason::silence));
}

ASREventRecord unknownAt(double t) {
    ASREventRecord record = partialAt(t, "never shown");
    record.kind = "note";
    return record;
}

TEST(CaptionReplayTests, TellsWhatTheCaptionsWouldHaveBeen) {
    struct Case {
        const char* name;
        std::vector<ASREventRecord> records;
        const char* transcript;
        std::int64_t locks, finals;
    };
    const Case cases[] = {
        {"nothing", {}, "", 0, 0},
        {"only a final", {finalAt(5, "One. Two.", 6)}, "One. 🏁\nTwo. 🏁", 0, 2},
        {"the last partial is flushed after the log",
         {partialAt(5, "a"), partialAt(5, "a b")},
         "-- live --\na b",
         0,
         0},
        {"everything that is open, in order",
         {partialAt(5, "One two. if it rains today, we"),
          partialAt(5.4, "One two. if it rains today, we")},
         "-- live --\nOne two.\nif it rains today,\nwe",
         0,
         0},
        {"a frozen sentence and a final",
         {partialAt(5, "One two. x"), partialAt(5.7, "One two. x"), finalAt(6, "One two. X y.", 6)},
         "One two. 🔒\nX y. 🏁",
         1,
         1},
        // Seen from 5.06 on it is old enough at 5.7; from 5.7 on it would not be.
        {"a timer fires at its due time and not at the next record",
         {partialAt(5, "x"), partialAt(5.01, "One two. x"), partialAt(5.7, "One two. x y")},
         "One two. 🔒\n-- live --\nx y",
         1,
         0},
        {"an unknown kind neither shows nor moves the clock",
         {unknownAt(1), partialAt(5, "a"), partialAt(5.01, "a b"), unknownAt(9),
          finalAt(5.02, "Late.", 6)},
         "Late. 🏁",
         0,
         1},
        {"records at negative times",
         {partialAt(-3, "a"), partialAt(-2, "a b")},
         "-- live --\na b",
         0,
         0},
    };
    for (const Case& c : cases) {
        const auto output =
            CaptionReplay::run(c.records, CaptionCore::Config(true, true, false), {});
        EXPECT_EQ(output.transcript(), c.transcript) << c.name;
        EXPECT_EQ(output.lockCount, c.locks) << c.name;
        EXPECT_EQ(output.finalCount, c.finals) << c.name;
    }
}

TEST(CaptionReplayTests, TimingsAreRelativeToTheFirstRecord) {
    const std::vector<ASREventRecord> records = {unknownAt(10), partialAt(10.25, "One two."),
                                                 finalAt(11, "One two. Three.", 9.88)};
    const auto output = CaptionReplay::run(records, CaptionCore::Config(true, true, false), {});
    EXPECT_EQ(
        output.segmentTimings,
        (Lines{"「One two.」 firstSeen=+0.25 committed=+1.00 改写=0  词: One@+0.25 two.@+0.25",
               "「Three.」 firstSeen=+-0.12 committed=+1.00 改写=0  词: Three.@+-0.12"}));
}

TEST(CaptionReplayTests, TheSameLogGivesTheSameIdentities) {
    const std::vector<ASREventRecord> records = {partialAt(5, "One two. x"),
                                                 finalAt(6, "One two. X y.", 6)};
    const CaptionCore::Config config(true, true, false);
    const auto first = CaptionReplay::run(records, config, {});
    EXPECT_EQ(first.segments, CaptionReplay::run(records, config, {}).segments);
    EXPECT_NE(first.segments.at(0).id, first.segments.at(1).id);
    EXPECT_EQ(first.wordEvents.size(), 2u);
}

} // namespace
} // namespace tessarune
