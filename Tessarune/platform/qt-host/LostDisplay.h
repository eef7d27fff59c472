#pragma once

#include <functional>

namespace tessarune {

/// The last chance of a program whose display goes away: Qt ends the process then, without
/// returning to the program. Main thread, one at a time.
class LostDisplay {
  public:
    /// `lastWork` runs once, on the main thread, before the process ends. The windows are of no use
    /// to it any more.
    explicit LostDisplay(std::function<void()> lastWork);
    ~LostDisplay();
    LostDisplay(const LostDisplay&) = delete;
};

} // namespace tessarune
