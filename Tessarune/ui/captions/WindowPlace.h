#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <QTimer>
#include <QWindow>
#include <string>

namespace tessarune {

/// Keeps where a window stands and how large it is, for each set of screens. Main thread; window
/// and store outlive it.
class WindowPlace {
  public:
    /// `name` is the window's name in the store.
    WindowPlace(QWindow& window, UserDefaults& store, std::string name);
    WindowPlace(const WindowPlace&) = delete;

    /// Moves the window to where it was with these screens, if it can be grabbed there.
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
    bool isItsOwn_ = false; // neither maximised nor the whole screen
    QTimer settled_;        // a window that is being moved is not saved at every step
    QTimer
        rearranged_; // after a change of the screens; what is moved then is not moved by the user
};

} // namespace tessarune
