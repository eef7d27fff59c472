#include "TessaruneCore/segmentation/SentenceStabilityKey.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tessarune {
namespace {

TEST(SentenceStabilityKeyTests, CaseCommonPunctuationAndSpacingDoNotCount) {
    const std::pair<std::string, std::string> cases[] = {
        {"Hello,  World!", "hello world"},
        {"\t It's \n 5-6… ", "its 56"},
        {"a - b", "a b"},
        {"\r\n.x.\r\n", "x"},
        {" . ", ""},
        {"（好）。你，我、他；？！：", "（好）你我他："},
        {"“Don’t”—so", "“don’t”so"},
        {"ÄÖ\u3000\u2003ÜΑΣ", "äö üας"},
        {"E\u0301", "é"},
        {"\u212A", "k"},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
        {"A\xFF", "a\uFFFD"},
    };
    for (const auto& [text, key] : cases)
        EXPECT_EQ(SentenceStabilityKey::normalize(text), key) << text;
}

RC_GTEST_PROP(SentenceStabilityKeyTests, TheQuickWayGivesTheSameKeys, ()) {
    const auto text = *rc::gen::container<std::string>(rc::gen::oneOf(
        rc::gen::inRange<char>(0, 127), rc::gen::elementOf(std::string(" \t\n.,?!;:\"'-Aa("))));
    RC_ASSERT(SentenceStabilityKey::normalize(text) ==
              SentenceStabilityKey::normalizeByCodePoints(text));
}

} // namespace
} // namespace tessarune
