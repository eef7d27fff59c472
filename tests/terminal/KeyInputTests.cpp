#include "Terminal/KeyInput.h"

#include <gtest/gtest.h>

namespace tessarune::testing {
namespace {

TEST(KeyInputTests, BytesOfATerminalBecomeKeysAndOthersAreIgnored) {
    using Key = KeyPress::Key;
    const auto letter = [](char character) { return KeyPress{Key::character, character}; };
    const std::vector<std::pair<std::string, std::vector<KeyPress>>> cases{
        {"k J+", {letter('k'), letter(' '), letter('j'), letter('+')}},
        {"\033[A\033OB", {{Key::up}, {Key::down}}},
        {"\033[1;5C\033[D", {{Key::right}, {Key::left}}},
        {"\033[15~\033[3~q", {letter('q')}}, // F5 and Delete
        {"\033[1;", {}},
        {"q\033[", {letter('q')}},
        {"\033O", {}},
        {"\r\177\303\251", {}}};
    for (const auto& [bytes, keys] : cases)
        EXPECT_EQ(keyPresses(bytes), keys) << ::testing::PrintToString(bytes);
}

} // namespace
} // namespace tessarune::testing
