#include "TessaruneCore/translation/CommittedTranslationHealthState.h"
#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessarune {
namespace {

using Severity = CommittedTranslationFailureSeverity;
using Action = CommittedTranslationFailureAction;
using CommittedTranslationUnitPlanner::nextPendingUnit;

std::string copies(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

/// Rows with the ids 1, 2, 3, …. A row whose text begins with "=" is translated; "!" means that its
/// translation failed.
std::vector<CaptionSegment> rows(const std::vector<std::string>& texts) {
    const auto newID = countingUUIDSource();
    std::vector<CaptionSegment> made;
    for (const auto& text : texts) {
        CaptionSegment segment;
        segment.id = newID();
        segment.sourceText = text;
        if (text.starts_with("="))
            segment.translatedText = "";
        if (text.starts_with("!"))
            segment.translationError = "failed";
        made.push_back(segment);
    }
    return made;
}

std::vector<UUID> ids(const std::vector<CaptionSegment>& segments, std::vector<std::size_t> which) {
    std::vector<UUID> list;
    for (const auto index : which)
        list.push_back(segments[index].id);
    return list;
}

TEST(CommittedTranslationUnitPlannerTests, GroupsPendingRowsUntilTheUnitIsComplete) {
    struct Case {
        std::vector<std::string> texts;
        std::vector<std::size_t> members; // of the next unit; empty: none is ready
        std::string sourceText;
        std::vector<std::size_t> forced; // with forceTail
    };
    const std::string words27 = copies("word ", 27); // with 28 words a unit is complete
    const Case cases[] = {
        {{}, {}, "", {}},
        {{"=done", "!failed"}, {}, "", {}},
        {{"Hello there."}, {0}, "Hello there.", {0}},
        {{"Hello there"}, {}, "", {0}},
        {{" OK, ", "fine.\n", "Next."}, {0, 1}, "OK, fine.", {0, 1}},
        {{"=done", "I think", "=done", "so."}, {}, "", {1}},
        {{"=done", "I think so!", "=done"}, {1}, "I think so!", {1}},
        {{"  ", "Hello."}, {0, 1}, "Hello.", {0, 1}},
        {{"Hello", " "}, {}, "", {0, 1}},
        {{" ", "\t"}, {0, 1}, "", {0, 1}},
        {{"He said \"no.\")"}, {0}, "He said \"no.\")", {0}},
        {{"He said \"no.\" )"}, {}, "", {0}}, // the blank before ")" hides the end of the sentence
        {{"他说「好。」』】）"}, {0}, "他说「好。」』】）", {0}},
        {{"Hello,", "\")"}, {}, "", {0, 1}},
        // Rows of punctuation alone complete no unit; they join the next row.
        {{"...", "?!", "Yes.", "No."}, {0, 1, 2}, "... ?! Yes.", {0, 1, 2}},
        {{"..."}, {}, "", {0}},
        {{words27}, {}, "", {0}},
        {{words27, "word"}, {0, 1}, words27 + "word", {0, 1}},
        {{copies("字", 179)}, {}, "", {0}},      // a unit of 180 characters is complete
        {{copies("e\u0301", 179)}, {}, "", {0}}, // counted in user-perceived characters
        {{copies("字", 89), copies("字", 90)},
         {0, 1},
         copies("字", 89) + " " + copies("字", 90),
         {0, 1}},
    };
    for (const auto& c : cases) {
        const auto segments = rows(c.texts);
        const auto label = ::testing::PrintToString(c.texts);
        const auto unit = nextPendingUnit(segments);
        ASSERT_EQ(unit.has_value(), !c.members.empty()) << label;
        if (unit) {
            EXPECT_EQ(unit->segmentIDs, ids(segments, c.members)) << label;
            EXPECT_EQ(unit->resultSegmentID, segments[c.members.back()].id) << label;
            EXPECT_EQ(unit->sourceText, c.sourceText) << label;
        }
        const auto forced = nextPendingUnit(segments, true);
        ASSERT_EQ(forced.has_value(), !c.forced.empty()) << label;
        if (forced) {
            EXPECT_EQ(forced->segmentIDs, ids(segments, c.forced)) << label;
        }
    }
}

TEST(CommittedTranslationUnitPlannerTests, AGroupOfTenSecondsIsComplete) {
    struct Case {
        const char* name;
        double startedAt;
        std::optional<double> firstEnd, lastEnd, lastCommit;
        bool isComplete;
    };
    const Case cases[] = {
        {"just long enough", 100, 104, 110, {}, true},
        {"a little short", 100, 104, 109.9, {}, false},
        {"without an end, the commit time counts", 100, 104, {}, 110, true},
        {"the end takes precedence over the commit time", 100, 104, 105, 110, false},
        {"without end and commit time, the end of the row before counts", 100, 110, {}, {}, true},
        {"ends before it starts", 200, 104, 110, {}, false},
        {"no end and no commit time", 100, {}, {}, {}, false},
    };
    for (const auto& c : cases) {
        auto segments = rows({" ", "I think", "so"});
        segments[0].startedAt = 0; // blank rows do not set the start time
        segments[0].committedAt = 1;
        segments[1].startedAt = c.startedAt;
        segments[1].endedAt = c.firstEnd;
        segments[2].startedAt = 0;
        segments[2].endedAt = c.lastEnd;
        segments[2].committedAt = c.lastCommit;
        const auto unit = nextPendingUnit(segments);
        const bool whole = unit && unit->segmentIDs.size() == 3;
        const bool early = unit && unit->segmentIDs.size() == 2; // the second row completes it
        EXPECT_EQ(whole || early, c.isComplete) << c.name;
        if (whole) {
            EXPECT_EQ(unit->committedAt, c.lastCommit) << c.name;
        }
    }
}

/// Tries every list of up to five rows, each of any of the `kinds`.
TEST(CommittedTranslationUnitPlannerTests, ForcedUnitsPartitionThePendingRows) {
    const std::vector<std::string> kinds = {"go on", "Stop.",         "", "...", "=done",
                                            "!gone", copies("a ", 28)};
    std::size_t lists = 1;
    for (int length = 0; length <= 5; ++length, lists *= kinds.size()) {
        for (std::size_t list = 0; list < lists; ++list) {
            std::vector<std::string> texts;
            for (std::size_t rest = list; texts.size() < static_cast<std::size_t>(length);
                 rest /= kinds.size())
                texts.push_back(kinds[rest % kinds.size()]);
            auto segments = rows(texts);
            std::vector<UUID> pending, grouped;
            for (const auto& segment : segments) {
                if (TranslationSegmentMutator::isPending(segment))
                    pending.push_back(segment.id);
            }
            while (const auto unit = nextPendingUnit(segments, true)) {
                grouped.insert(grouped.end(), unit->segmentIDs.begin(), unit->segmentIDs.end());
                ASSERT_TRUE(TranslationSegmentMutator::applySuccess(
                    unit->translationUnitID, unit->segmentIDs, unit->resultSegmentID, "x",
                    segments));
            }
            ASSERT_EQ(grouped, pending) << ::testing::PrintToString(texts);
        }
    }
}

TEST(CommittedTranslationHealthStateTests, RepeatedFailuresEscalateAndActionableOnesSurface) {
    const UUID unit = UUID::random();
    CommittedTranslationHealthState health;
    const auto fail = [&](Severity severity) { return health.recordFailure(unit, severity); };
    const Action inARow[] = {Action::continueSilently,    Action::continueSilently,
                             Action::rebuildLanguagePair, Action::continueSilently,
                             Action::surfaceWarning,      Action::surfaceWarning};
    for (const auto action : inARow)
        EXPECT_EQ(fail(Severity::recoverable), action) << "count " << health.consecutiveFailedUnits;
    EXPECT_EQ(health.unresolvedUnitIDs, std::unordered_set<UUID>{unit}) << "the unit counts once";

    EXPECT_EQ(fail(Severity::actionable), Action::surfaceImmediately);
    EXPECT_EQ(health.consecutiveFailedUnits, 0);

    fail(Severity::recoverable);
    fail(Severity::recoverable);
    health.recordSuccess(UUID::random());
    EXPECT_TRUE(health.hasUnresolvedUnits()) << "another unit's success resolves nothing";
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(fail(Severity::recoverable), inARow[i]) << "the success must reset the count";

    health.resolveFailures({unit});
    EXPECT_FALSE(health.hasUnresolvedUnits());
    EXPECT_EQ(health.consecutiveFailedUnits, 3);
    health.reset();
    EXPECT_EQ(health, CommittedTranslationHealthState());
}

} // namespace
} // namespace tessarune
