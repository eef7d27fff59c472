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
        {"说 hello 好", 8, {"说 hello", "好"}},
        {"你", 1, {"你"}},
        {"a b", 0, {"a", "b"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Text::wrapped(c.text, c.width), c.expected) << c.text << " in " << c.width;
}

} // namespace
} // namespace tessarune
