#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <QTimer>
#include <QWindow>
#include <string>

namespace tessarune {

/// Keeps where a window stands and how large it is, for each set of screens. Main thread; window
/// and store outlive it.
class CaptionWindowPlace {
  public:
    CaptionWindowPlace(QWindow& window, UserDefaults& store);
    CaptionWindowPlace(const CaptionWindowPlace&) = delete;

    /// Puts the window where it was with these screens, if it could be taken hold of there.
    void restore();
    void save();

  private:
    static std::string key();

    QWindow& window_;
    UserDefaults& store_;
    QTimer settled_; // a window that is being moved is not saved at every step
};

} // namespace tessarune
