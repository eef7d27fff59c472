#include "Terminal/TerminalCursor.h"

#include <unistd.h>

#include <atomic>
#include <string_view>

namespace tessarune::TerminalCursor {

namespace {

constexpr int noTerminal = -1;
constexpr std::string_view shownAgain = "\033[0m\033[?25h\r\n";

std::atomic<int> guarded = noTerminal;
std::atomic<bool> paused = false;

} // namespace

void guard(int descriptor) {
    guarded = descriptor;
}

void release() {
    guarded = noTerminal;
}

void restore() noexcept {
    const int terminal = guarded;
    if (terminal != noTerminal)
        (void)!::write(terminal, shownAgain.data(), shownAgain.size());
}

void setPaused(bool isOn) noexcept {
    paused = isOn;
}

bool isPaused() noexcept {
    return paused;
}

} // namespace tessarune::TerminalCursor
