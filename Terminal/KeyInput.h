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

/// What a terminal sends for the keys that were pressed; other keys and half of one give nothing.
std::vector<KeyPress> keyPresses(std::string_view bytes);

/// The keys of the terminal on standard input, as they are pressed, until it is dropped. Whatever
/// ends or stops the program, the terminal's settings come back (TerminalCursor). One at a time.
///
/// Main queue; the host outlives it. A thread of its own reads, and not while another program has
/// the terminal.
class KeyInput {
  public:
    KeyInput(Host& host, std::function<void(KeyPress)> onKey);
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    /// After the program was stopped.
    void beginAnew();

  private:
    int wakeUp_;        ///< can be read once it is to end
    Block dropHandler_; ///< what is still posted does nothing then
    std::thread reader_;
};

} // namespace tessarune
