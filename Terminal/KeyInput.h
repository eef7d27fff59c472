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

/// Decodes the bytes that a terminal sends for keys; other keys and incomplete sequences give
/// nothing.
std::vector<KeyPress> keyPresses(std::string_view bytes);

/// Reads single keys from the terminal on standard input while it lives. However the program ends
/// or stops, the terminal's settings are restored (TerminalCursor). One at a time.
///
/// Main queue; the host outlives it. A thread of its own reads, except while another program has
/// the terminal.
class KeyInput {
  public:
    KeyInput(Host& host, std::function<void(KeyPress)> onKey);
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    /// Call after the program was stopped.
    void beginAnew();

  private:
    int wakeUp_;        ///< becomes readable when it is to end
    Block dropHandler_; ///< later posts do nothing then
    std::thread reader_;
};

} // namespace tessarune
