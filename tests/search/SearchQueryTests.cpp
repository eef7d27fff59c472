#include "Tessarune/search/SearchQuery.h"
#include "Tessarune/search/SearchTokens.h"

#include <gtest/gtest.h>

namespace tessarune::testing {

TEST(SearchQueryTests, EquivalentTextsHaveTheSameTokens) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Don't stop—it’s 3.14!", "dont stop its 3 14"},
        {"Café ÉCLAIR Ａｂｃ straße", "cafe eclair abc strasse"},
        {"AI模型 不错", "ai 模 型 不 错"},
        {"カタカナ 한국어", "カ タ カ ナ 한 국 어"},
        {"'tis dogs' ''", "tis dogs"},
        {"\xFF\xFE a\xC3", "a"},
        {"", ""},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(SearchTokens::joined(text), SearchTokens::joined(expected)) << text;
    EXPECT_EQ(SearchTokens::joined(cases[0].first), cases[0].second);
    EXPECT_EQ(SearchTokens::cut("x Café")[1], (SearchToken{"cafe", 2, 5}));
}

TEST(SearchQueryTests, MatchesWordsPrefixesAndPhrases) {
    struct Case {
        std::string query;
        std::string text;
        bool matches;
    };
    const std::vector<Case> cases{
        {"neural net", "the networks are neural", true},   // any order; the last word is a prefix
        {"neural net ", "the networks are neural", false}, // here the last word is complete
        {"net neural", "the networks are neural", false},
        {"\"are neural\"", "the networks are neural", true},
        {"\"neural are\"", "the networks are neural", false},
        {"\"networks ar", "the networks are neural", true},
        {"e-mail", "an e-mail", true},
        {"e-mail", "mail e", false},
        {"n", "neural", false}, // one letter matches too much
        {"dont CAFE", "I don't like cafés", true},
        {"语言", "我们学习语言。", true},
        {"习语", "我们学习语言。", true},
        {"言语", "我们学习语言。", false},
        {"模型 AI", "AI模型", true},
    };
    for (const auto& [query, text, matches] : cases)
        EXPECT_EQ(SearchQuery::parse(query).matches({text}), matches) << query << " in " << text;
    EXPECT_TRUE(SearchQuery::parse("one two").matches({"two", "one"}));
    for (const char* nothing : {"", " ", "\"", "\"\" . ,", "*:^(-)"})
        EXPECT_TRUE(SearchQuery::parse(nothing).isEmpty()) << nothing;
}

TEST(SearchQueryTests, AnExcerptSurroundsTheFirstMatch) {
    const std::string text = "first line\nThe naïve cafés of Paris are full.\nlast line";
    const auto of = [&](const char* query) {
        return SearchExcerpt::of(SearchQuery::parse(query), text, 8);
    };
    EXPECT_EQ(of("paris cafe"), (SearchExcerpt{"…e naïve ", "cafés", " of Pari…"}));
    EXPECT_EQ(of("last"), (SearchExcerpt{"", "last", " line"}));
    EXPECT_EQ(of("london"), std::nullopt);
}

} // namespace tessarune::testing
