#pragma once

#include <functional>

namespace tessarune {

/// Runs a last piece of work when the display is lost: Qt then ends the process without returning
/// to the program. Main thread; one object at a time.
class LostDisplay {
  public:
    /// `lastWork` runs once before the process ends: on the main thread, or on another thread
    /// for which the main thread waits. It cannot use the windows any more.
    explicit LostDisplay(std::function<void()> lastWork);
    ~LostDisplay();
    LostDisplay(const LostDisplay&) = delete;
};

} // namespace tessarune
