#include "TessaruneCore/translation/SessionTranscriptBuilder.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Strings = std::vector<std::string>;
namespace Builder = TranslationPresentationBuilder;
namespace Mutator = TranslationSegmentMutator;

CaptionSegment row(std::string source, std::optional<std::string> translated = std::nullopt,
                   std::optional<std::string> error = std::nullopt) {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = std::move(source);
    segment.translatedText = std::move(translated);
    segment.translationError = std::move(error);
    return segment;
}

/// Four rows, of which the last three are one unit.
struct UnitOfThree : ::testing::Test {
    std::vector<CaptionSegment> segments{row("Zero.", "null"), row("One,"), row("two,"),
                                         row("three.")};
    const UUID unit = UUID::random();
    const std::vector<UUID> members{segments[1].id, segments[2].id, segments[3].id};

    bool succeed(const std::string& text) {
        return Mutator::applySuccess(unit, members, members.back(), text, segments);
    }
    bool fail(const std::string& error) {
        return Mutator::applyFailure(unit, members, members.back(), error, segments);
    }
};

TEST_F(UnitOfThree, SuccessPutsTheTextOnOneRowAndClosesTheOthers) {
    fail("broken");
    EXPECT_TRUE(succeed(" un, deux, trois. "));
    EXPECT_EQ(segments[1].translatedText, "");
    EXPECT_EQ(segments[3].translatedText, " un, deux, trois. ");
    for (std::size_t i = 1; i <= 3; ++i) {
        EXPECT_EQ(segments[i].translationError, std::nullopt);
        EXPECT_EQ(segments[i].translationUnitID, unit);
        EXPECT_EQ(segments[i].translationResultSegmentID, members.back());
        EXPECT_EQ(segments[i].translationUnitIndex, i - 1);
        EXPECT_EQ(segments[i].translationUnitCount, 3);
    }
    EXPECT_EQ(segments[0].translationUnitID, std::nullopt) << "the first row is not in the unit";
    EXPECT_EQ(Mutator::nextPendingIndex(segments), std::nullopt);
    EXPECT_EQ(Builder::visibleTranslations(segments, {}), (Strings{"null", "un, deux, trois."}));
    EXPECT_EQ(Builder::visibleTranslations(segments, {segments[0].id}),
              Strings{"un, deux, trois."});
    EXPECT_EQ(Builder::translatedCount(segments), 2u);
    EXPECT_EQ(SessionTranscriptBuilder::bilingualText(segments),
              "Zero.\nnull\n\nOne,\n\ntwo,\n\nthree.\nun, deux, trois.");
    EXPECT_EQ(SessionTranscriptBuilder::translationText(segments), "null\nun, deux, trois.");

    EXPECT_FALSE(succeed(" un, deux, trois. ")) << "the same result again is no change";
    EXPECT_TRUE(succeed("autre"));
    EXPECT_FALSE(Mutator::applySuccess(unit, {UUID::random()}, unit, "x", segments));
}

TEST_F(UnitOfThree, FailureShowsOnAllRowsUntilItIsCleared) {
    EXPECT_EQ(Mutator::nextPendingIndex(segments), 1u);
    fail("first");
    EXPECT_TRUE(fail("broken")) << "another failure is a change";
    EXPECT_FALSE(fail("broken"));
    EXPECT_EQ(Mutator::nextPendingIndex(segments), std::nullopt);
    EXPECT_TRUE(Builder::hasFailures(segments));
    EXPECT_EQ(Builder::pendingCount(segments), 0u);

    segments[1].translationError = "other";
    EXPECT_TRUE(Mutator::clearErrors(segments, [](const CaptionSegment& segment) {
        return segment.translationError == "broken";
    }));
    EXPECT_EQ(Mutator::nextPendingIndex(segments), 2u);
    EXPECT_EQ(segments[2].translationUnitCount, std::nullopt);
    EXPECT_EQ(segments[1].translationUnitCount, 3);

    segments[0].translationError = "late";
    Mutator::clearErrors(segments);
    EXPECT_FALSE(Builder::hasFailures(segments));
    EXPECT_EQ(segments[0].translatedText, "null") << "only failures are cleared";
    Mutator::clearResults(segments);
    EXPECT_EQ(Builder::pendingCount(segments), 4u);
}

TEST(TranslationPresentationBuilderTests, StatusTextShowsTheMostImportantState) {
    const CaptionSegment pending = row("a"), done = row("b", "B"), member = row("c", ""),
                         failed = row("d", std::nullopt, "no");
    struct Case {
        std::vector<CaptionSegment> segments;
        Builder::StatusInput input;
        std::string_view text;
    };
    const Case cases[] = {
        {{pending}, {"Off", "fr", "message", true, true}, ""},
        {{pending}, {"Google", "fr", "message"}, "Google翻译尚未接入，请切换到 Apple 离线翻译。"},
        {{pending}, {"苹果", "fr", "message", true, true}, "message"},
        {{pending}, {"苹果", "fr", "", true, true, false}, ""},
        {{pending}, {"苹果", "fr", "", true, true}, "正在翻译…"},
        {{pending, done, pending}, {"苹果", "fr", "", true}, "还有 2 句等待翻译"},
        {{pending}, {"苹果", "en", ""}, "还有 1 句等待翻译"},
        {{}, {"苹果", "fr", "", true}, "正在预翻译稳定候选句…"},
        {{}, {"苹果", "fr", ""}, "等待句子稳定后开始翻译"},
        {{member, done, failed}, {"苹果", "fr", ""}, "已完成 1 句翻译"},
        {{member, failed}, {"苹果", "fr", ""}, "等待下一句"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Builder::statusText(c.segments, c.input), c.text);

    EXPECT_TRUE(Builder::canRetryIncomplete(std::vector{failed}, true));
    EXPECT_FALSE(Builder::canRetryIncomplete(std::vector{member}, true));
    EXPECT_FALSE(Builder::canRetryFailures(std::vector{pending}, true));
    EXPECT_FALSE(Builder::canRetryFailures(std::vector{failed}, false));
    EXPECT_EQ(Builder::visibleGhostText(" g ", true), "g");
    EXPECT_EQ(Builder::visibleGhostText(" g ", false), "");
}

TEST(SessionTranscriptBuilderTests, FourSourcesMakeOneTextWithoutRepetition) {
    const std::vector<CaptionSegment> none;
    const std::vector<CaptionSegment> committed{row(" One. ", " un "), row(" ", "seul"), row(" ")};
    const std::vector<CaptionSegment> leading{row("Two.", "ignored")};
    const std::vector<CaptionSegment> soft{row("Three,")};
    const auto partial = row(" four ");
    auto repeated = partial;
    repeated.id = soft.back().id;
    struct Case {
        const char* name;
        SessionTranscriptBuilder::Sources sources;
        std::string_view source, bilingual;
        std::size_t visibleWithoutTwo; // number of visible rows if "Two." is cleared
    };
    const auto blank = row(" \n");
    const SessionTranscriptBuilder::Sources all{committed, leading, soft, partial};
    const Case cases[] = {
        {"no text", {none, none, none, blank}, "", "", 0},
        {"partial alone", {none, none, none, partial}, "four", "four", 1},
        {"all", all, "One.\nTwo.\nThree,\nfour", "One.\nun\n\nseul\n\nTwo.\n\nThree,\n\nfour", 5},
        {"a partial with the id of the row before it",
         {none, leading, soft, repeated},
         "Two.\nThree,",
         "Two.\n\nThree,",
         1},
        {"a partial with the id of an earlier row",
         {soft, leading, none, repeated},
         "Three,\nTwo.\nfour",
         "Three,\n\nTwo.\n\nfour",
         1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SessionTranscriptBuilder::sourceText(c.sources), c.source) << c.name;
        EXPECT_EQ(SessionTranscriptBuilder::bilingualText(c.sources), c.bilingual) << c.name;
        const auto visible =
            SessionTranscriptBuilder::visibleSourceSegments(c.sources, {leading.front().id});
        EXPECT_EQ(visible.size(), c.visibleWithoutTwo) << c.name;
    }
    EXPECT_EQ(SessionTranscriptBuilder::visibleSourceSegments(all, {}).back(), partial);
    EXPECT_EQ(SessionTranscriptBuilder::visibleSourceSegments(all, {partial.id}).back(),
              soft.back());
}

} // namespace
} // namespace tessarune
