#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessarune {
namespace {

using Strings = std::vector<std::string>;

Strings strings(const std::vector<std::string_view>& views) {
    return {views.begin(), views.end()};
}

TEST(TextTests, CharactersAreGraphemeClusters) {
    struct Case {
        const char* what;
        std::string text;
        Strings characters;
    };
    const Case cases[] = {
        {"an empty text", "", {}},
        {"letters", "ab", {"a", "b"}},
        {"carriage return and line feed", "a\r\nb", {"a", "\r\n", "b"}},
        {"line feed and carriage return", "\n\r\r\n", {"\n", "\r", "\r\n"}},
        {"carriage return before a mark", "\r\u0301", {"\r", "\u0301"}},
        {"several marks", "e\u0301\u0323x", {"e\u0301\u0323", "x"}},
        {"a blank with a mark", "a \u0301b", {"a", " \u0301", "b"}},
        {"flags in pairs, one left over", "🇺🇸🇬🇧🇦x", {"🇺🇸", "🇬🇧", "🇦", "x"}},
        {"NUL", std::string("a\0b", 3), {"a", std::string(1, '\0'), "b"}},
        {"invalid UTF-8",
         "\xE4\xBD"
         "a\xFF\u0301",
         {"\xE4", "\xBD", "a", "\xFF\u0301"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(strings(Text::characters(c.text)), c.characters) << c.what;
        EXPECT_EQ(Text::length(c.text), c.characters.size()) << c.what;
        EXPECT_EQ(Text::prefix(c.text, 1), c.characters.empty() ? "" : c.characters[0]) << c.what;
    }
}

TEST(TextTests, CountsBeyondTheEndTakeTheWholeText) {
    EXPECT_EQ(Text::prefix("äb", 5), "äb");
    EXPECT_EQ(Text::dropFirst("äb", 1), "b");
    EXPECT_EQ(Text::dropFirst("äb", 5), "");
    EXPECT_EQ(Text::truncated("a\u0301bc", 2, "…"), "a\u0301b…");
    EXPECT_EQ(Text::truncated("a\u0301b", 2, "…"), "a\u0301b");
}

TEST(TextTests, EqualityAndPrefixesAreByCanonicalEquivalence) {
    struct Case {
        std::string text;
        std::string start;
        bool equal;
        bool hasPrefix;
    };
    const Case cases[] = {
        {"", "", true, true},
        {"a", "", false, true},
        {"", "a", false, false},
        {"café", "cafe\u0301", true, true},
        {"café au lait", "cafe\u0301", false, true},
        {"cafe\u0301", "cafe", false, false},
        {"cafe\u0301", "caf", false, true},
        {"cafes", "cafe", false, true},
        {"q\u0307\u0323", "q\u0323\u0307", true, true},
        {"x\r\n", "x\r", false, false},
        {"ﬁ", "fi", false, false}, // equivalent only by compatibility
        {"中文字", "中文", false, true},
        {"\xFF", "\uFFFD", true, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Text::equal(c.text, c.start), c.equal) << c.text << "|" << c.start;
        EXPECT_EQ(Text::equal(c.start, c.text), c.equal) << c.text << "|" << c.start;
        EXPECT_EQ(Text::hasPrefix(c.text, c.start), c.hasPrefix) << c.text << "|" << c.start;
        EXPECT_EQ(Text::canonical(c.text) == Text::canonical(c.start), c.equal) << c.text;
    }
    EXPECT_TRUE(Text::equal(Strings{"é", "b"}, Strings{"e\u0301", "b"}));
    EXPECT_FALSE(Text::equal(Strings{"é", "b"}, Strings{"é"}));
}

TEST(TextTests, TrimmingWorksOnCodePoints) {
    struct Case {
        const char* what;
        std::string text;
        std::string trimmed;
        std::string trimmedOfBlanks;
    };
    const Case cases[] = {
        {"only white space", " \t\r\n\u3000", "", "\r\n"},
        {"ASCII space", "\v\f a b \t", "a b", "\v\f a b"},
        {"next line", "\u0085a\u0085", "a", "\u0085a\u0085"},
        {"line and paragraph separator", "\u2028a\u2029", "a", "\u2028a\u2029"},
        {"no-break and ideographic space", "\u00A0a\u3000", "a", "a"},
        {"zero width space is no space", "\u200Ba\uFEFF", "\u200Ba\uFEFF", "\u200Ba\uFEFF"},
        {"the space before a combining mark is removed", " \u0301a", "\u0301a", "\u0301a"},
        {"line breaks are not blanks", "\r\na\r\n", "a", "\r\na\r\n"},
        {"invalid bytes stay", " \xA0 a\xE3\x80 ", "\xA0 a\xE3\x80", "\xA0 a\xE3\x80"},
        {"the information separators stay",
         "\x1C"
         "a\x1F",
         "\x1C"
         "a\x1F",
         "\x1C"
         "a\x1F"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Text::trimmed(c.text), c.trimmed) << c.what;
        EXPECT_EQ(Text::trimmedOfBlanks(c.text), c.trimmedOfBlanks) << c.what;
    }
}

TEST(TextTests, SplittingDistinguishesBlanksFromWhiteSpace) {
    struct Case {
        std::string text;
        Strings atBlanks;
        Strings onWhiteSpace;
        std::size_t nonWhiteSpace;
    };
    const Case cases[] = {
        {"", {}, {}, 0},
        {"  a  b\tc ", {"a", "b\tc"}, {"a", "b", "c"}, 3},
        {"a\r\nb\u3000c\u00A0d", {"a\r\nb\u3000c\u00A0d"}, {"a", "b", "c", "d"}, 4},
        {"a \u0301b c", {"a \u0301b", "c"}, {"a", "b", "c"}, 3},
        {"a\u200Bb\u0085c", {"a\u200Bb\u0085c"}, {"a\u200Bb", "c"}, 4},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(strings(Text::splitAtBlanks(c.text)), c.atBlanks) << c.text;
        EXPECT_EQ(Text::countOfBlankSeparated(c.text), c.atBlanks.size()) << c.text;
        EXPECT_EQ(strings(Text::splitOnWhiteSpace(c.text)), c.onWhiteSpace) << c.text;
        EXPECT_EQ(Text::countOfWhiteSpaceSeparated(c.text), c.onWhiteSpace.size()) << c.text;
        EXPECT_EQ(Text::countOfNonWhiteSpace(c.text), c.nonWhiteSpace) << c.text;
    }
    EXPECT_EQ(Text::collapsingWhiteSpace(" \r\na\u3000\tb \u0301"), " a b \u0301");
    EXPECT_EQ(Text::joined(Strings{"a", "", "b"}, ", "), "a, , b");
}

TEST(TextTests, LowerCaseIsTheFullMappingWithoutLanguageRules) {
    const std::pair<std::string, std::string> cases[] = {
        {"HeLLo, 1", "hello, 1"}, {"ΌΔΟΣ ΣΟΦΟΣ Σ", "όδος σοφος σ"},
        {"İI", "i\u0307i"},       {"STRAẞE Ǆ", "straße ǆ"},
        {"\xFFÄ", "\uFFFDä"},
    };
    for (const auto& [text, lower] : cases)
        EXPECT_EQ(Text::lowercased(text), lower);
}

TEST(TextTests, CodePointsBelongToTheirClasses) {
    struct Case {
        char32_t codePoint;
        bool letter;
        bool alphanumeric;
        bool letterOrNumber;
        bool ideograph;
    };
    const Case cases[] = {
        {U'a', true, true, true, false},
        {U'_', false, false, false, false},
        {U'7', false, true, true, false},
        {U'½', false, true, true, false},
        {U'\u0301', true, true, false, false},
        {U'中', true, true, true, true},
        {U'\u3400', true, true, true, true},
        {U'\u4DC0', false, false, false, false},
        {U'か', true, true, true, false},
        {U'𠀀', true, true, true, false},
        {U'\U0010FFFF', false, false, false, false},
    };
    for (const auto& c : cases) {
        const auto number = static_cast<std::uint32_t>(c.codePoint);
        EXPECT_EQ(Text::isLetter(c.codePoint), c.letter) << "code point " << number;
        EXPECT_EQ(Text::isAlphanumeric(c.codePoint), c.alphanumeric) << "code point " << number;
        EXPECT_EQ(Text::isLetterOrNumber(c.codePoint), c.letterOrNumber) << "code point " << number;
        EXPECT_EQ(Text::isCJKIdeograph(c.codePoint), c.ideograph) << "code point " << number;
    }
    EXPECT_TRUE(Text::containsCJK("abc中"));
    EXPECT_FALSE(Text::containsCJK("カタカナ한글"));
}

TEST(TextTests, InvalidUTF8IsDetectedAndNeverWritten) {
    const std::pair<std::string, bool> cases[] = {
        {"", true},
        {std::string(200, 'a') + "é中😀", true},
        {std::string(200, 'a') + "\xFF", false},
        {"\xC0\x80", false},         // overlong
        {"\xED\xA0\x80", false},     // surrogate
        {"\xF4\x90\x80\x80", false}, // beyond U+10FFFF
        {"\xE4\xBD", false},
    };
    for (const auto& [bytes, valid] : cases)
        EXPECT_EQ(Text::isValidUTF8(bytes), valid) << bytes;
    std::string text;
    for (const char32_t codePoint : {0x41U, 0xE9U, 0x4E2DU, 0x1F600U, 0xD800U, 0x110000U})
        Text::append(text, codePoint);
    EXPECT_EQ(text, "Aé中😀\uFFFD\uFFFD");
}

TEST(TextTests, NumbersPrintInShortestAndFixedForm) {
    const std::pair<double, std::string> cases[] = {
        {0.6, "0.6"},
        {1, "1.0"},
        {0, "0.0"},
        {-0.0, "-0.0"},
        {100000, "100000.0"},
        {1760000000.25, "1760000000.25"},
        {0.1 + 0.2, "0.30000000000000004"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {9007199254740993, "9007199254740992.0"},
        {1e16, "1e+16"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(Text::shortest(value), text);
    EXPECT_EQ(Text::fixed(0.125, 2), "0.12");
    EXPECT_EQ(Text::fixed(-0.004, 2), "-0.00");
    EXPECT_EQ(Text::fixed(2.5, 0), "2");
    EXPECT_EQ(Text::fixed(std::numeric_limits<double>::max(), 2).size(), 312u);
}

} // namespace
} // namespace tessarune
