#include "TessaruneCore/translation/EmojiFlagSupport.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using namespace TranslationSupport;

TEST(TranslationSupportTests, ListsItsTargetLanguages) {
    ASSERT_EQ(targetLanguages().size(), 19u);
    EXPECT_EQ(targetLanguages().front().id, "zh-Hans");
    EXPECT_EQ(targetLanguages().back().id, "uk");
    EXPECT_EQ(targetLanguage("en"), nullptr);
    ASSERT_NE(targetLanguage("zh-Hant"), nullptr);
    EXPECT_EQ(targetLanguage("zh-Hant")->flag, "🇹🇼")
        << "without a glyph test, the flag counts as drawable";
    EXPECT_EQ(EmojiFlagSupport::resolveTraditionalChineseFlag(false), "🇭🇰");
    EXPECT_EQ(translationTargetDisplayName(*targetLanguage("hi")), "हिन्दी");
    EXPECT_EQ(translationTargetDisplayName({"xx", ""}), "xx");

    EXPECT_EQ(languagePairKey("en", "zh-Hans"), "en-US->zh-Hans");
    EXPECT_EQ(languagePairKey("pt-BR", "xx"), "pt-BR->xx");
}

TEST(TranslationSupportTests, ComparesPrimaryLanguages) {
    struct Case {
        std::string_view target, source;
        bool isSame;
    };
    const Case cases[] = {
        {"en-GB", "en", true}, {"EN_us", "en", true}, {"zh-Hans", "zh-Hant", true},
        {"pt-BR", "pt", true}, {"pt", "es", false},   {"-_en", "en", true},
        {"", "", true},        {"", "en", false},     {"--", "__", true},
        {"_", "en", false},    {"enm", "en", false},  {"É-fr", "e\u0301", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isSameLanguageTarget(c.target, c.source), c.isSame) << c.target << c.source;
}

TEST(TranslationSupportTests, ConvertsTraditionalCharactersOnlyForSimplifiedChinese) {
    EXPECT_EQ(normalizedTranslatedText("這個語言 ok 🇹🇼", "zh-Hans"), "这个语言 ok 🇹🇼");
    EXPECT_EQ(normalizedTranslatedText("這個語言", "zh-Hant"), "這個語言");
    EXPECT_EQ(normalizedTranslatedText("", "zh-Hans"), "");
}

TEST(TranslationSupportTests, DescribesWhatABackendCanDo) {
    struct Case {
        std::string_view backend, target, title, normalized;
        bool isRunnable;
    };
    const Case cases[] = {
        {"Off", "fr", "已关闭", "关闭", false},      {"关闭", "en", "已关闭", "关闭", false},
        {"Apple", "en", "同语种直通", "苹果", true}, {"苹果", "fr", "可用", "苹果", true},
        {"Google", "fr", "未接入", "苹果", false},   {"", "fr", "未接入", "苹果", false},
    };
    for (const auto& c : cases) {
        const auto status = backendStatus(c.backend, c.target);
        EXPECT_EQ(status.title, c.title) << c.backend;
        EXPECT_EQ(status.isRunnable, c.isRunnable) << c.backend;
        EXPECT_EQ(normalizedBackend(c.backend), c.normalized) << c.backend;
        EXPECT_EQ(canUseSoftTranslation(c.backend), c.isRunnable) << c.backend;
    }
    EXPECT_EQ(backendStatus("Google", "fr").detail,
              "Google翻译尚未接入，请切换到 Apple 离线翻译。");
}

TEST(TranslationSupportTests, RecognisesItsOwnResourceMessages) {
    for (const auto& target : targetLanguages()) {
        const std::string message(languageResourceNotReadyMessage(target.id));
        EXPECT_TRUE(isLanguageResourceNotReadyDisplayMessage("\n " + message + " ")) << target.id;
        EXPECT_EQ(translationFailureStatusText(message), message);
    }
    const auto fallBack = languageResourceNotReadyMessage("xx");
    EXPECT_EQ(fallBack, languageResourceNotReadyMessage("en"));
    EXPECT_FALSE(isLanguageResourceNotReadyDisplayMessage(fallBack));
    EXPECT_EQ(translationFailureStatusText("so"), "翻译失败：so");
}

TEST(GhostTranslationPlannerTests, PrefersTheNewestSentenceToAClause) {
    struct Case {
        std::vector<std::string> soft, leading;
        std::optional<std::string> candidate;
    };
    const Case cases[] = {
        {{"Well,"}, {"I think so."}, "I think so."},
        {{"Well, I think,"}, {}, "Well, I think,"},
        {{"Well, I"}, {"One two.", " Three four. ", "  "}, "Three four."},
        {{"Well, I"}, {"Yes."}, std::nullopt}, // only the newest sentence counts
        {{}, {"我觉得是的。"}, std::nullopt},
        {{}, {"我 觉得。"}, "我 觉得。"},
        {{}, {"one\u00A0word"}, std::nullopt},
        {{" "}, {""}, std::nullopt},
    };
    for (const auto& c : cases) {
        BoundaryObservation observation;
        observation.decision.softPieces = c.soft;
        observation.decision.leading = c.leading;
        observation.decision.hardPieces = {"never this one"};
        observation.decision.tail = "nor that";
        EXPECT_EQ(GhostTranslationPlanner::latestCandidate(observation), c.candidate)
            << ::testing::PrintToString(c.leading);
    }
}

TEST(GhostTranslationPlannerTests, SameWordsAreTheSameCandidate) {
    using GhostTranslationPlanner::matches;
    using GhostTranslationPlanner::normalizedKey;
    EXPECT_EQ(normalizedKey("I THINK so!"), "i think so");
    EXPECT_EQ(normalizedKey("  it's—10%… "), "it s 10");
    EXPECT_EQ(normalizedKey("?!…"), "");
    EXPECT_TRUE(matches("I THINK so!", "fr", "i think, so", "fr"));
    EXPECT_TRUE(matches("caf\u00E9", "fr", "CAFE\u0301.", "fr"));
    EXPECT_FALSE(matches("I think so", "fr", "I think so", "de"));
    EXPECT_FALSE(matches("I think so", "fr", "I think", "fr"));
}

TEST(TranslationSupportTests, AnyFormOfALanguageTagGivesTheTargetLanguage) {
    const struct {
        const char* written;
        const char* id; ///< empty: none
    } cases[] = {
        {"pt-BR", "pt-BR"},
        {"PT_br", "pt-BR"},
        {"pt", "pt-BR"},
        {"pt-PT", ""},
        {"ja", "ja"},
        {"ja-JP", "ja"},
        {"es-419", "es"},
        {"jap", ""},
        {"zh", "zh-Hans"},
        {"zh-cn", "zh-Hans"},
        {"ZH_SG", "zh-Hans"},
        {"zh-tw", "zh-Hant"},
        {"zh-hk", "zh-Hant"},
        {"zh-Hans-HK", "zh-Hans"},
        {"zh-xx", ""},
        {"en", ""},
        {"", ""},
        {"-", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TranslationSupport::targetLanguageID(c.written).value_or(""), c.id) << c.written;
}

} // namespace
} // namespace tessarune
