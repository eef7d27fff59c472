#pragma once

#include <QObject>
#include <QSet>
#include <QWindow>

namespace tessarune {

/// Logs when a window of the program is shown for the first time, gets the keyboard, or has been
/// resized. Main thread, with the application object.
class WindowLog : public QObject {
  public:
    WindowLog();

  private:
    void focusChanged(QWindow* window);

    QSet<QWindow*> known_; // windows that had the focus and still exist
};

} // namespace tessarune
