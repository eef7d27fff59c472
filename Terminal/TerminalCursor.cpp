#include "Terminal/TerminalCursor.h"

#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <string_view>

namespace tessarune::TerminalCursor {

namespace {

constexpr int noTerminal = -1;
constexpr std::string_view shownAgain = "\033[0m\033[?25h\r\n";

std::atomic<int> guarded = noTerminal;
std::atomic<bool> paused = false;
std::atomic<int> keysOf = noTerminal; ///< the terminal in single-key mode
termios keyboard{};                   ///< the settings of `keysOf` before its keys were taken

} // namespace

void guard(int descriptor) {
    guarded = descriptor;
}

void release() {
    guarded = noTerminal;
}

bool isInForeground(int descriptor) noexcept {
    return ::tcgetpgrp(descriptor) == ::getpgrp();
}

void takeKeys(int descriptor) {
    // Only in the foreground: SIGTTOU would stop a background process that changes the terminal.
    if (keysOf != noTerminal || !isInForeground(descriptor) ||
        ::tcgetattr(descriptor, &keyboard) != 0)
        return;
    termios single = keyboard;
    single.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    single.c_cc[VMIN] = 1;
    single.c_cc[VTIME] = 0;
    keysOf = descriptor;
    ::tcsetattr(descriptor, TCSADRAIN, &single);
}

void releaseKeys() noexcept {
    const int descriptor = keysOf.exchange(noTerminal);
    if (descriptor != noTerminal && isInForeground(descriptor))
        ::tcsetattr(descriptor, TCSANOW, &keyboard);
}

void restore() noexcept {
    releaseKeys();
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
