#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"

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

RC_GTEST_PROP(SentenceStabilityKeyTests, TheFastPathsGiveTheSameKeys, ()) {
    const std::string ascii = " \t\n.,?!;:\"'-Aa(";
    const std::u32string others =
        U"\u00A0\u0130\u0301\u03A3\u1100\u1E9E\u3000中文字，。、…—ÄẞȺαＡ😀";
    const auto points = *rc::gen::container<std::vector<char32_t>>(rc::gen::oneOf(
        rc::gen::cast<char32_t>(rc::gen::inRange(0, 127)),
        rc::gen::cast<char32_t>(rc::gen::elementOf(ascii)), rc::gen::elementOf(others)));
    const bool isPureASCII = *rc::gen::inRange(0, 3) == 0; // one text in three
    std::string text;
    for (const char32_t point : points) {
        if (point < 0x80 || !isPureASCII)
            Text::append(text, point);
    }
    RC_ASSERT(SentenceStabilityKey::normalize(text) ==
              SentenceStabilityKey::normalizeByCodePoints(text));
}

} // namespace
} // namespace tessarune
