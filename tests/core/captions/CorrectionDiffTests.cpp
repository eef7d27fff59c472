#include "TessaruneCore/captions/CorrectionDiff.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(CorrectionDiffTests, CountsDroppedAddedAndCommonWords) {
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

} // namespace
} // namespace tessarune
