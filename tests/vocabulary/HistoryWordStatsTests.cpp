#include "Tessarune/platform/language-detector/DetectedLanguage.h"
#include "Tessarune/platform/wordnet/WordNetLexicon.h"
#include "Tessarune/vocabulary/HistoryWordStats.h"
#include "Tessarune/vocabulary/HistoryWordStatsMemoryCache.h"
#include "Tessarune/vocabulary/LemmaTagger.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace tessarune::testing {

namespace {

HistoryWordStats statsOf(std::string_view text) {
    WordNetLexicon lexicon;
    return HistoryWordStats::build(text, 0, 12.5, lexicon, detectedLanguage);
}

/// "token:count token:count …" in the order of the entries.
std::string tokensIn(const HistoryWordStats& stats) {
    std::string listed;
    for (const auto& entry : stats.tokenEntries)
        listed += entry.token + ":" + std::to_string(entry.count) + " ";
    return listed;
}

/// The lemmas of the words of a sentence, joined by blanks.
std::string lemmasOf(const std::string& sentence) {
    WordNetLexicon lexicon;
    LemmaTagger tagger(lexicon);
    std::vector<std::string> words;
    for (const auto word : Text::splitAtBlanks(sentence))
        words.emplace_back(word);
    return Text::joined(tagger.lemmas(words), " ");
}

} // namespace

TEST(HistoryWordStatsTests, ContractionsAreSplitAndHyphenatedWordsStayWhole) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Don’t stop!", "do:1 not:1 stop:1 "},
        {"I won't, he can't, we shan't.", "not:3 can:1 he:1 i:1 shall:1 we:1 will:1 "},
        {"It's Anna's; who'd've thought she'll say I'm here",
         "anna:1 am:1 have:1 here:1 i:1 is:1 it:1 say:1 she:1 thought:1 who:1 will:1 would:1 "},
        {"The dogs' well-known o'clock", "dogs:1 o'clock:1 the:1 well-known:1 "},
        {"state-of-the-art", "state-of-the-art:1 "},
        {"a b I 3 x2 - 'quoted' x", "a:1 i:1 quoted:1 "},
        {"Café naïve\n\n  café\n", "café:2 naïve:1 "},
        {"我们学习语言", "学习:1 我们:1 语言:1 "},
        {"", ""},
    };
    for (const auto& [text, expected] : cases) {
        auto sorted = [](const std::string& listed) {
            auto listedWords = Text::splitAtBlanks(listed);
            std::ranges::sort(listedWords);
            return listedWords;
        };
        EXPECT_EQ(sorted(tokensIn(statsOf(text))), sorted(expected)) << text;
    }
}

TEST(HistoryWordStatsTests, CountsTokensAndLemmasBySentence) {
    const auto stats = statsOf("I think that she thinks.\nWe thought so, and we think so.\n");
    EXPECT_EQ(stats.languageCode, "en");
    EXPECT_EQ(stats.tokenCount, 12);
    EXPECT_EQ(stats.uniqueTokenCount, 9);
    EXPECT_EQ(stats.sentenceCount, 2);
    EXPECT_EQ(stats.averageTokensPerSentence, 6);
    EXPECT_EQ(tokensIn(stats).substr(0, 24), "so:2 think:2 we:2 and:1 ");
    const auto& think = stats.vocabularyEntries.front();
    EXPECT_EQ(think.lemma, "think");
    EXPECT_EQ(think.rank, 1);
    EXPECT_EQ(think.count, 4);
    EXPECT_DOUBLE_EQ(think.share, 4.0 / 12);
    EXPECT_EQ(think.sentenceIndices, (std::vector{0, 1}));
    ASSERT_EQ(think.forms.size(), 3U);
    EXPECT_EQ(think.forms[0].token, "think");
    EXPECT_EQ(think.forms[1].token, "thinks");
    EXPECT_EQ(think.forms[2].token, "thought");
    EXPECT_EQ(think.occurrences[2], (HistoryWordStats::Occurrence{1, 1, "thought"}));
    EXPECT_EQ(stats.vocabularyCount, static_cast<int>(stats.vocabularyEntries.size()));

    const auto spanish = statsOf("Los niños corren por las calles de la ciudad, y las casas son "
                                 "muy bonitas cuando llega la primavera.");
    EXPECT_EQ(spanish.languageCode, "es");
    EXPECT_EQ(spanish.vocabularyCount, spanish.uniqueTokenCount);
}

/// Irregular forms, forms with several readings, and function words that a lexicon of content words
/// confuses with other words.
TEST(HistoryWordStatsTests, FindsLemmasOfIrregularAndAmbiguousForms) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"she was not there and they were is am are been being",
         "she be not there and they be be be be be be"},
        {"he has had having does did done goes went gone", "he have have have do do do go go go"},
        {"i saw the saw", "i see the saw"},
        {"they left the left side", "they leave the left side"},
        {"we thought of a thought", "we think of a thought"},
        {"they are building the building", "they be build the building"},
        {"the leaves fell when she leaves", "the leaf fall when she leave"},
        {"he lives their lives", "he live their life"},
        {"children men feet mice geese teeth wives", "child man foot mouse goose tooth wife"},
        {"ran began wrote brought caught taught sought", "run begin write bring catch teach seek"},
        {"better best worse worst further", "good good bad bad far"},
        {"this his its us as during others these", "this his its us as during others these"},
        {"lying laid lain spoke stole woven", "lie lay lie speak steal weave"},
        {"criteria analyses phenomena indices matrices",
         "criterion analysis phenomenon index matrix"},
        {"studies studied bigger easiest stopping tied tying", "study study big easy stop tie tie"},
        {"news physics species glasses", "news physics species glass"},
        {"tessarune gpus blorgs 语言", "tessarune gpus blorgs 语言"},
    };
    for (const auto& [sentence, expected] : cases)
        EXPECT_EQ(lemmasOf(sentence), expected);
}

TEST(HistoryWordStatsTests, TheDictionaryAcceptsAnyTextFromAnyThread) {
    WordNetLexicon lexicon;
    const auto senses = lexicon.definitions("dictionary");
    ASSERT_FALSE(senses.empty());
    EXPECT_EQ(senses[0].partOfSpeech, PartOfSpeech::noun);
    EXPECT_EQ(senses[0].text, "a reference book containing an alphabetical list of words with "
                              "information about them");
    EXPECT_EQ(lexicon.definitions("think")[0].examples.size(), 4U);
    for (const std::string& hostile :
         {std::string(), std::string(100'000, 's'), std::string(61, 'x'), std::string("\xFF\xFE"),
          std::string("%s%n"), std::string("_"), std::string("a_b c"), std::string("'-.")}) {
        EXPECT_TRUE(lexicon.readings(hostile).empty()) << hostile.substr(0, 20);
        EXPECT_TRUE(lexicon.definitions(hostile).empty()) << hostile.substr(0, 20);
    }
    const auto expected = lexicon.readings("axes");
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            WordNetLexicon own;
            for (int round = 0; round < 50; ++round)
                EXPECT_EQ(own.readings("axes"), expected);
        });
}

TEST(HistoryWordStatsTests, TheCacheKeepsTheTwelveTextsUsedLast) {
    HistoryWordStatsMemoryCache cache;
    const auto key = [](int n) {
        return HistoryWordStatsCacheKey::of(std::nullopt, std::to_string(n), 0, {});
    };
    for (int n = 0; n < 12; ++n)
        cache.insert(key(n), std::make_shared<const HistoryWordStats>());
    EXPECT_TRUE(cache.value(key(0)));
    cache.insert(key(12), std::make_shared<const HistoryWordStats>());
    EXPECT_TRUE(cache.value(key(0)));
    EXPECT_FALSE(cache.value(key(1)));
    EXPECT_TRUE(cache.value(key(12)));
}

} // namespace tessarune::testing
