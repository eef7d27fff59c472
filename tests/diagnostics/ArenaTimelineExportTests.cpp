#include "Tessarune/diagnostics/ArenaTimelineExport.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(ArenaTimelineExportTests, RawTimesAreTestedBeforeTheOriginIsTakenOff) {
    CaptionSegment timed;
    timed.id.bytes[15] = 1;
    timed.startedAt = 99;
    timed.endedAt = 0;
    timed.committedAt = -1;
    timed.firstSeenAt = 100;
    timed.freezeKind = FreezeKind::soft;
    timed.translatedText = "eins";
    timed.translationError = "";
    CaptionSegment bare;
    bare.id.bytes[15] = 2;
    CaptionSegment empty = bare;
    empty.id.bytes[15] = 3;
    const CaptionCore::WordEvents wordEvents = {
        // The span is taken over starts and ends alike, whatever their order.
        {timed.id, {{"a", 100, std::nullopt, 105, 104}, {"b", 0, 101, 103, std::nullopt}}},
        {empty.id, {}},
    };
    const auto engine = ArenaTimelineExport::buildEngine("id", "title", {}, {},
                                                         {timed, bare, empty}, wordEvents, 100);
    ASSERT_EQ(engine.segments.size(), 3u);
    const auto& segment = engine.segments[0];
    EXPECT_EQ(segment.startedAt, -1);
    EXPECT_EQ(segment.endedAt, std::nullopt);
    EXPECT_EQ(segment.committedAt, std::nullopt);
    EXPECT_EQ(segment.firstSeenAt, 0);
    EXPECT_EQ(segment.audioStart, 3);
    EXPECT_EQ(segment.audioEnd, 5);
    EXPECT_EQ(segment.freezeKind, "soft");
    EXPECT_EQ(segment.translatedText, "eins");
    EXPECT_EQ(segment.translationError, "");
    ASSERT_EQ(segment.words->size(), 2u);
    EXPECT_EQ(segment.words->at(0).firstSeenAt, 0);
    EXPECT_EQ(segment.words->at(1).firstSeenAt, std::nullopt);
    EXPECT_EQ(segment.words->at(1).revealedAt, 1);
    EXPECT_EQ(segment.words->at(1).audioEnd, std::nullopt);
    EXPECT_EQ(engine.segments[1].startedAt, std::nullopt);
    EXPECT_EQ(engine.segments[1].words, std::nullopt);
    EXPECT_EQ(engine.segments[2].words, std::nullopt) << "no events, no list";
}

} // namespace
} // namespace tessarune
