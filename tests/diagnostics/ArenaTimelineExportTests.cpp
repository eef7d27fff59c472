#include "Tessarune/diagnostics/ArenaTimelineExport.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(ArenaTimelineExportTests, TimesUpToZeroAreOmittedAndOthersCountFromTheOrigin) {
    CaptionSegment timed;
    timed.id.bytes[15] = 1;
    timed.startedAt = 99;
    timed.endedAt = 0;
    timed.committedAt = -1;
    timed.firstSeenAt = 100;
    CaptionSegment bare;
    const CaptionCore::WordEvents wordEvents = {
        // A row's sound span covers all starts and ends of its words, whatever their order.
        {timed.id, {{"a", 100, std::nullopt, 105, 104}, {"b", 0, 101, 103, std::nullopt}}},
        {bare.id, {}},
    };
    const auto [id, title, caps, config, segments] =
        ArenaTimelineExport::buildEngine("id", "title", {}, {}, {timed, bare}, wordEvents, 100);
    EXPECT_EQ(segments[0].startedAt, -1);
    EXPECT_EQ(segments[0].endedAt, std::nullopt);
    EXPECT_EQ(segments[0].committedAt, std::nullopt);
    EXPECT_EQ(segments[0].firstSeenAt, 0);
    EXPECT_EQ(segments[0].audioStart, 3);
    EXPECT_EQ(segments[0].audioEnd, 5);
    EXPECT_EQ(segments[0].words->at(0).firstSeenAt, 0);
    EXPECT_EQ(segments[0].words->at(1).firstSeenAt, std::nullopt);
    EXPECT_EQ(segments[0].words->at(1).revealedAt, 1);
    EXPECT_EQ(segments[1].startedAt, std::nullopt);
    EXPECT_EQ(segments[1].words, std::nullopt) << "a segment without word events has no list";
}

} // namespace
} // namespace tessarune
