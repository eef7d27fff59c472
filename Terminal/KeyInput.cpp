#include "Terminal/KeyInput.h"

#include "Terminal/TerminalCursor.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

/// How often the program checks whether it has the terminal again.
constexpr int backgroundMilliseconds = 200;

void readKeys(Host& host, int wakeUp, const std::shared_ptr<std::function<void(KeyPress)>>& onKey) {
    bool hasFailed = false;
    for (;;) {
        const bool hasKeyboard =
            !std::exchange(hasFailed, false) && TerminalCursor::isInForeground(STDIN_FILENO);
        std::array<pollfd, 2> files{
            {{wakeUp, POLLIN, 0}, {hasKeyboard ? STDIN_FILENO : -1, POLLIN, 0}}};
        if (poll(files.data(), files.size(), hasKeyboard ? -1 : backgroundMilliseconds) < 0)
            continue;
        if (files[0].revents != 0)
            return;
        if (files[1].revents == 0 || !TerminalCursor::isInForeground(STDIN_FILENO))
            continue;
        std::array<char, 64> bytes{};
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count == 0)
            return; // the terminal is gone
        // The program may have lost the terminal just before the read, so it tries again later.
        hasFailed = count < 0;
        if (hasFailed)
            continue;
        for (const KeyPress press : keyPresses({bytes.data(), static_cast<std::size_t>(count)}))
            host.post([onKey, press] {
                if (*onKey)
                    (*onKey)(press);
            });
    }
}

} // namespace

std::vector<KeyPress> keyPresses(std::string_view bytes) {
    using Key = KeyPress::Key;
    std::vector<KeyPress> presses;
    while (!bytes.empty()) {
        const bool isSequence =
            bytes.size() >= 2 && bytes[0] == '\033' && (bytes[1] == '[' || bytes[1] == 'O');
        if (!isSequence) {
            if (const auto byte = static_cast<unsigned char>(bytes[0]); std::isprint(byte))
                presses.push_back({Key::character, static_cast<char>(std::tolower(byte))});
            bytes.remove_prefix(1);
            continue;
        }
        // A sequence ends with its first letter or "~"; "1;5C" is a right arrow with Control.
        std::size_t end = 2;
        while (end < bytes.size() && bytes[end] < '@')
            ++end;
        if (end == bytes.size())
            break; // incomplete, or Alt with '[' or 'O'
        switch (bytes[end]) {
        case 'A':
            presses.push_back({Key::up});
            break;
        case 'B':
            presses.push_back({Key::down});
            break;
        case 'C':
            presses.push_back({Key::right});
            break;
        case 'D':
            presses.push_back({Key::left});
            break;
        default:
            break;
        }
        bytes.remove_prefix(end + 1);
    }
    return presses;
}

KeyInput::KeyInput(Host& host, std::function<void(KeyPress)> onKey)
    : wakeUp_(eventfd(0, EFD_CLOEXEC)) {
    if (wakeUp_ < 0)
        throw std::system_error(errno, systemErrors(), "eventfd");
    TerminalCursor::takeKeys(STDIN_FILENO);
    auto handler = std::make_shared<std::function<void(KeyPress)>>(std::move(onKey));
    dropHandler_ = [handler] { *handler = nullptr; };
    reader_ = std::thread([&host, wakeUp = wakeUp_, handler] { readKeys(host, wakeUp, handler); });
}

KeyInput::~KeyInput() {
    dropHandler_();
    const std::uint64_t one = 1;
    (void)!::write(wakeUp_, &one, sizeof one);
    reader_.join();
    ::close(wakeUp_);
    TerminalCursor::releaseKeys();
}

void KeyInput::resume() {
    TerminalCursor::takeKeys(STDIN_FILENO);
}

} // namespace tessarune
