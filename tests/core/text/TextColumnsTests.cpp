#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(TextColumnsTests, CountsTheCellsThatATerminalUses) {
    const struct {
        const char* text;
        std::size_t expected;
    } cases[] = {{"", 0},   {"hello", 5}, {"你好", 4}, {"é", 1},    {"e\u0301", 1}, {"한", 2},
                 {"🇬🇧", 2}, {"🙂", 2},  {"ａ。", 4}, {"a\tb", 2}, {"“x”", 3}};
    for (const auto& c : cases)
        EXPECT_EQ(Text::columns(c.text), c.expected) << c.text;
}

TEST(TextColumnsTests, BreaksAtBlanksAndBetweenWideCharacters) {
    using Lines = std::vector<std::string>;
    const struct {
        const char* text;
        std::size_t width;
        Lines expected;
    } cases[] = {
        {"", 10, {}},
        {"one two three", 7, {"one two", "three"}},
        {"one two three", 8, {"one two", "three"}},
        {"one  two", 3, {"one", "two"}},
        {"incomprehensible", 6, {"incomp", "rehens", "ible"}},
        {"a incomprehensible", 6, {"a", "incomp", "rehens", "ible"}},
        {"你好世界", 5, {"你好", "世界"}},
        {"你好世界。", 8, {"你好世", "界。"}},
        {"你好（世界）。", 6, {"你好", "（世", "界）。"}},
        {"说 hello 好", 8, {"说 hello", "好"}},
        {"你", 1, {"你"}},
        {"a b", 0, {"a", "b"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Text::wrapped(c.text, c.width), c.expected) << c.text << " in " << c.width;
}

TEST(TextColumnsTests, TruncatesToTheWidthInCells) {
    const struct {
        const char* text;
        std::size_t width;
        const char* expected;
    } cases[] = {
        {"hello", 5, "hello"},  {"hello!", 5, "hell…"}, {"字幕", 4, "字幕"},
        {"字幕窗", 5, "字幕…"}, {"字幕窗", 4, "字…"},   {"", 0, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Text::fitted(c.text, c.width), c.expected) << c.text << " in " << c.width;
}

TEST(TextColumnsTests, PrintableTextContainsNoTerminalCommands) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"Zeit: 3 µs, 字幕\n\tÀ", "Zeit: 3 µs, 字幕\n\tÀ"},
        {"\033]0;title\007", "\uFFFD]0;title\uFFFD"},
        {"a\rb\bc\x7F", "a\uFFFDb\uFFFDc\uFFFD"},
        {"\u009B2J", "\uFFFD2J"},
        {"\x9B"
         "2J",
         "\uFFFD2J"},
        {"user\u202Egpj.exe\u2066", "user\uFFFDgpj.exe\uFFFD"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Text::printable(c.text), c.expected);
    EXPECT_EQ(Text::printableLine("a\n\r\tb\033[1m"), "a b\uFFFD[1m");
}

} // namespace
} // namespace tessarune
