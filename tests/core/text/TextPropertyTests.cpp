#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextSlowPath.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace tessarune {
namespace {

/// One piece of a difficult text: each piece joins, splits, composes or breaks something.
rc::Gen<std::string> hardPiece() {
    return rc::gen::elementOf(std::vector<std::string>{
        "a",      "e",      "K",      " ",      "\t",     "\r",     "\n",     ".",
        "é",      "\u00A0", "\u00AD", "©",      "ß",      "Σ",      "σ",      "İ",
        "\u0301", "\u0323", "\u0345", "Å",      "\u212B", "\u0374", "\u0600", "क",
        "\u094D", "ष",      "\u093F", "\u0E33", "\u1100", "\u1161", "\u11A8", "가",
        "각",     "ᄒ",     "\u1E9B", "\u200B", "\u200C", "\u200D", "\u2028", "\u0085",
        "\u2003", "\uFE0F", "か",     "\u3099", "が",     "\uFF9E", "中",     "，",
        "\uF900", "\uFEFF", "\uFFFD", "🇺",      "🇸",      "👩",      "🏽",   "\U0001D15E",
        "\xFF",   "\xE4",   "\x80"});
}

rc::Gen<std::string> anyCodePoint() {
    return rc::gen::map(rc::gen::inRange<std::uint32_t>(0, 0x30000), [](std::uint32_t codePoint) {
        std::string text;
        Text::append(text, codePoint);
        return text;
    });
}

std::string concatenation(const std::vector<std::string>& pieces) {
    return Text::joined(pieces, "");
}

rc::Gen<std::string> hardText() {
    return rc::gen::map(
        rc::gen::container<std::vector<std::string>>(
            rc::gen::weightedOneOf<std::string>({{8, hardPiece()}, {1, anyCodePoint()}})),
        concatenation);
}

rc::Gen<std::string> anyText() {
    const auto ascii = rc::gen::container<std::string>(rc::gen::oneOf(
        rc::gen::inRange<char>(0, 127), rc::gen::elementOf(std::string("\r\n a.Z"))));
    return rc::gen::oneOf(hardText(), ascii);
}

RC_GTEST_PROP(TextPropertyTests, FastPathsGiveTheResultsOfTheSlowPath, ()) {
    const auto text = *anyText();
    RC_ASSERT(Text::characters(text) == Text::SlowPath::characters(text));
    RC_ASSERT(Text::canonical(text) == Text::SlowPath::canonical(text));
    RC_ASSERT(Text::lowercased(text) == Text::SlowPath::lowercased(text));
    if (!text.empty())
        RC_ASSERT(Text::lastCharacter(text) == Text::SlowPath::characters(text).back());
}

RC_GTEST_PROP(TextPropertyTests, CountsEqualTheNumbersOfPieces, ()) {
    const auto text = *anyText();
    RC_ASSERT(Text::countOfBlankSeparated(text) == Text::splitAtBlanks(text).size());
    RC_ASSERT(Text::countOfWhiteSpaceSeparated(text) == Text::splitOnWhiteSpace(text).size());
}

RC_GTEST_PROP(TextPropertyTests, ComparisonsAgreeWithTheSlowPath, ()) {
    // Texts with a common prefix that differ in a piece or two and may be canonically equivalent.
    const auto beginning = *anyText();
    const auto a = beginning + *hardText();
    const auto b = *rc::gen::elementOf(std::vector<std::string>{
        beginning, beginning + *hardText(), Text::canonical(a), Text::canonical(beginning),
        std::string(Text::prefix(a, *rc::gen::inRange<std::size_t>(0, 6)))});
    RC_ASSERT(Text::equal(a, b) == Text::SlowPath::equal(a, b));
    RC_ASSERT(Text::hasPrefix(a, b) == Text::SlowPath::hasPrefix(a, b));
    RC_ASSERT(Text::hasPrefix(b, a) == Text::SlowPath::hasPrefix(b, a));
}

RC_GTEST_PROP(TextPropertyTests, StrayBytesCountAsReplacementCharacters, ()) {
    const auto text = *rc::gen::container<std::string>(rc::gen::oneOf(
        rc::gen::arbitrary<char>(), rc::gen::elementOf(std::string("\xE4\xBD\xA0 a\xCC\x81"))));
    std::string replaced;
    for (const char32_t codePoint : Text::codePoints(text))
        Text::append(replaced, codePoint);
    RC_ASSERT(Text::isValidUTF8(replaced));
    RC_ASSERT(Text::isValidUTF8(text) == (replaced == text));
    RC_ASSERT(Text::equal(text, replaced));
    RC_ASSERT(Text::length(text) == Text::length(replaced));
    RC_ASSERT(Text::equal(Text::trimmed(text), Text::trimmed(replaced)));
    RC_ASSERT(Text::codePoints(Text::trimmed(text)).size() ==
              Text::codePoints(Text::trimmed(replaced)).size());
}

RC_GTEST_PROP(TextPropertyTests, TheShortestFormOfANumberReadsBackUnchanged, (std::uint64_t bits)) {
    const auto value = std::bit_cast<double>(bits);
    RC_PRE(value == value);
    RC_ASSERT(std::strtod(Text::shortest(value).c_str(), nullptr) == value);
}

/// Every fast path relies on this property.
TEST(TextPropertyTests, PlainCodePointsJoinNothing) {
    std::vector<std::string> plain;
    for (char32_t codePoint = 0; codePoint < 0x110000; ++codePoint) {
        if (Text::isPlain(codePoint) && codePoint != '\r') {
            plain.emplace_back();
            Text::append(plain.back(), codePoint);
        }
    }
    ASSERT_GT(plain.size(), 30000u) << "most plain code points are missing";
    // Some neighbours join the code point before them. The plain code point after a neighbour
    // still begins a character.
    const std::vector<std::string> neighbours{"a",  "가",      "각",     "中",
                                              "か", "क\u094D", "\u200D", "👩\u200D",
                                              "🇺",  "e\u0301", "\u093F", "\xFF"};
    for (const auto& neighbour : neighbours) {
        std::string text;
        for (const auto& one : plain)
            text += one + neighbour;
        const bool isNormal = Text::SlowPath::canonical(neighbour) == neighbour;
        EXPECT_EQ(Text::SlowPath::canonical(text) == text, isNormal) << neighbour;
        const auto ends = Text::SlowPath::characterEnds(text);
        std::size_t at = 0;
        auto end = ends.begin();
        for (const auto& one : plain) {
            at += one.size() + neighbour.size();
            end = std::lower_bound(end, ends.end(), at);
            ASSERT_TRUE(end != ends.end() && *end == at) << "no end: " << one << neighbour;
        }
    }
}

} // namespace
} // namespace tessarune
