#pragma once

#include <QObject>
#include <QSet>
#include <QWindow>

namespace tessarune {

/// Logs when a window with a title gets the keyboard focus, for the first time or again, and when
/// such a window is resized later. Main thread; needs the application object.
class WindowLog : public QObject {
  public:
    WindowLog();

  private:
    void focusChanged(QWindow* window);

    QSet<QWindow*> known_; // windows that had the focus and still exist
};

} // namespace tessarune
