#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <QTimer>
#include <QWindow>
#include <string>

namespace tessarune {

/// Stores the position and size of a window for each set of screens, and restores them when the set
/// changes. Main thread; window and store must outlive it.
class WindowPlace {
  public:
    /// `name` is the window's name in the store.
    WindowPlace(QWindow& window, UserDefaults& store, std::string name);
    WindowPlace(const WindowPlace&) = delete;

    /// Moves the window to its stored place for the current screens, if the user could grab it
    /// there.
    void restore();

  private:
    std::string key() const;
    void moved();
    void fetchBack();
    void save();
    void screensChanged();

    QWindow& window_;
    UserDefaults& store_;
    const std::string name_;
    bool isNormal_ = false; // neither maximised nor full screen
    QTimer settled_;        // delays saving while the window is being moved
    QTimer rearranged_;     // runs after a change of the screens, when the desktop moves windows
};

} // namespace tessarune
