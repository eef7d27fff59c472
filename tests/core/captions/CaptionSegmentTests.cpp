#include "TessaruneCore/captions/CaptionSegment.h"

#include <gtest/gtest.h>

#include <functional>

namespace tessarune {
namespace {

TEST(CaptionSegmentTests, EqualityComparesEveryFieldAndTextsByCanonicalEquivalence) {
    CaptionSegment segment;
    segment.sourceText = "caf\u00E9";
    CaptionSegment same = segment;
    same.sourceText = "cafe\u0301";
    EXPECT_EQ(segment, same);

    const std::function<void(CaptionSegment&)> changes[] = {
        [](auto& s) { s.id.bytes[15] = 1; },
        [](auto& s) { s.sourceText = "cafe"; },
        [](auto& s) { s.translatedText = ""; },
        [](auto& s) { s.translationError = ""; },
        [](auto& s) { s.translationUnitID = UUID{}; },
        [](auto& s) { s.translationResultSegmentID = UUID{}; },
        [](auto& s) { s.translationUnitIndex = 0; },
        [](auto& s) { s.translationUnitCount = 0; },
        [](auto& s) { s.revision = 1; },
        [](auto& s) { s.state = CaptionSegmentState::final; },
        [](auto& s) { s.freezeKind = FreezeKind::soft; },
        [](auto& s) { s.startedAt = 1; },
        [](auto& s) { s.endedAt = 0; },
        [](auto& s) { s.committedAt = 0; },
        [](auto& s) { s.firstSeenAt = 0; },
        [](auto& s) { s.revisionCount = 1; },
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        CaptionSegment other = segment;
        changes[i](other);
        EXPECT_NE(segment, other) << "after change " << i;
    }
}

} // namespace
} // namespace tessarune
