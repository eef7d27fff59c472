#include "TessaruneCore/captions/ArenaTextDiff.h"
#include "TessaruneCore/captions/CorrectionDiff.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tessarune {
namespace {

TEST(CorrectionDiffTests, CountsWordsOutsideTheCommonOnes) {
    const struct {
        std::string shown;
        std::string final;
        CorrectionDiff::WordCounts expected;
    } cases[] = {
        {"", "", {0, 0, 0}},
        {" ... ", "-", {0, 0, 0}},
        {"Hello, world", "hello world!", {0, 0, 2}},
        {"", "two words", {0, 2, 0}},
        {"the cat sat down", "a cat sat", {2, 1, 2}},
        {"a b c d", "b a d c", {2, 2, 2}},
        {"it's 5-6", "its 56", {0, 0, 2}},
        {"\u00C9t\u00E9", "e\u0301te\u0301", {0, 0, 1}},
        {"你好，世界", "你好世界", {0, 0, 1}},
        {"a\tb", "ab", {0, 0, 1}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CorrectionDiff::wordCounts(c.shown, c.final), c.expected) << c.shown;
}

std::string marked(const std::vector<DiffToken>& tokens) {
    std::string text;
    for (const auto& token : tokens)
        text += (token.type == DiffType::keep     ? "="
                 : token.type == DiffType::insert ? "+"
                                                  : "-") +
                token.text;
    return text;
}

TEST(ArenaTextDiffTests, ARemovalStandsBeforeWhatReplacesIt) {
    const struct {
        std::string base;
        std::string compare;
        std::string expected;
    } cases[] = {
        {"", "", ""},
        {"", "ab", "+ab"},
        {"ab", "", "-ab"},
        {"abc", "axc", "=a-b+x=c"},
        {"cafe\u0301!", "caf\u00E9?", "=cafe\u0301-!+?"},
        {"👩🏽", "👩", "-👩🏽+👩"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(marked(ArenaTextDiff::tokens(c.base, c.compare)), c.expected);
}

RC_GTEST_PROP(ArenaTextDiffTests, TokensRebuildBothTexts, ()) {
    const auto letters = rc::gen::container<std::string>(rc::gen::elementOf(std::string("abc")));
    const auto base = *letters;
    const auto compare = *letters;
    std::string removed;
    std::string inserted;
    for (const auto& token : ArenaTextDiff::tokens(base, compare)) {
        if (token.type != DiffType::insert)
            removed += token.text;
        if (token.type != DiffType::remove)
            inserted += token.text;
    }
    RC_ASSERT(removed == base);
    RC_ASSERT(inserted == compare);
}

} // namespace
} // namespace tessarune
