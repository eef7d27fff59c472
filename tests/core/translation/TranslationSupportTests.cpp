#include "TessaruneCore/translation/EmojiFlagSupport.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using namespace TranslationSupport;

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

TEST(TranslationSupportTests, OnlyAKnownBackendThatIsOnCanTranslate) {
    const std::pair<std::string_view, bool> cases[] = {{"Off", false},    {"关闭", false},
                                                       {"Apple", true},   {"苹果", true},
                                                       {"Google", false}, {"", false}};
    for (const auto& [backend, isRunnable] : cases) {
        EXPECT_EQ(backendStatus(backend, "fr").isRunnable, isRunnable) << backend;
        EXPECT_EQ(canUseSoftTranslation(backend), isRunnable) << backend;
    }
}

TEST(TranslationSupportTests, AFlagThatTheSystemCannotDrawIsReplaced) {
    EXPECT_EQ(targetLanguage("zh-Hant")->flag, "🇹🇼")
        << "without a glyph test, the flag counts as drawable";
    EXPECT_EQ(EmojiFlagSupport::resolveTraditionalChineseFlag(false), "🇭🇰");
}

TEST(TranslationSupportTests, ConvertsTraditionalCharactersOnlyForSimplifiedChinese) {
    EXPECT_EQ(normalizedTranslatedText("這個語言 ok 🇹🇼", "zh-Hans"), "这个语言 ok 🇹🇼");
    EXPECT_EQ(normalizedTranslatedText("這個語言", "zh-Hant"), "這個語言");
    EXPECT_EQ(normalizedTranslatedText("", "zh-Hans"), "");
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
