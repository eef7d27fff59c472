#pragma once

#include <QObject>
#include <QSet>
#include <QWindow>

namespace tessarune {

/// Logs each time that a window with a title gets the keyboard focus, and when a window that had
/// the focus is resized. Main thread; needs the application object.
class WindowLog : public QObject {
  public:
    WindowLog();

  private:
    void focusChanged(QWindow* window);

    QSet<QWindow*> known_; // windows that had the focus and still exist
};

} // namespace tessarune
