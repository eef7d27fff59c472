#pragma once

#include "TessaruneCore/host/Host.h"

#include <functional>
#include <string_view>
#include <thread>
#include <vector>

namespace tessarune {

struct KeyPress {
    enum class Key { character, left, right, up, down };
    Key key = Key::character;
    char character = 0; ///< printable ASCII in lower case; 0 for the other keys

    bool operator==(const KeyPress&) const = default;
};

/// Decodes the bytes that a terminal sends for keys; skips unknown keys and incomplete sequences.
std::vector<KeyPress> keyPresses(std::string_view bytes);

/// While it exists, reads single keys from the terminal on standard input and passes them to
/// `onKey`. When the program ends, crashes or stops, TerminalCursor restores the terminal's
/// settings, except after SIGKILL and SIGSTOP. Only one KeyInput may exist at a time.
///
/// Main queue, which also calls `onKey`. The host must outlive the object. A thread of its own
/// reads, except while another program has the terminal.
class KeyInput {
  public:
    /// Throws std::system_error if no file descriptor is free.
    KeyInput(Host& host, std::function<void(KeyPress)> onKey);
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    /// Takes the keys again. Call when the program continues after a stop.
    void resume();

  private:
    int wakeUp_;        ///< an eventfd; becomes readable when the thread must end
    Block dropHandler_; ///< makes queued key presses do nothing
    std::thread reader_;
};

} // namespace tessarune
