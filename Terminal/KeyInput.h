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
    char character = 0; ///< in lower case

    bool operator==(const KeyPress&) const = default;
};

/// Decodes the bytes that a terminal sends for keys; skips unknown keys and incomplete sequences.
std::vector<KeyPress> keyPresses(std::string_view bytes);

/// Reads single keys from the terminal on standard input while it exists. However the program ends
/// or stops, the terminal's settings are restored (TerminalCursor). Only one may exist at a time.
///
/// Main queue; the host must outlive it. Its own thread reads, but not while another program has
/// the terminal.
class KeyInput {
  public:
    KeyInput(Host& host, std::function<void(KeyPress)> onKey);
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    /// Takes the keys again. Call when the program continues after a stop.
    void resume();

  private:
    int wakeUp_;        ///< becomes readable when the thread must end
    Block dropHandler_; ///< makes key presses that are still posted do nothing
    std::thread reader_;
};

} // namespace tessarune
