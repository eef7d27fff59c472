#pragma once

#include <QObject>
#include <QWindow>

namespace tessarune {

/// Keeps a window with its frame small enough for its screen. With a large text size of the
/// desktop, the window's usual size, and even its minimum size, may be larger than the screen. A
/// user may still enlarge the window. Belongs to the window. Main thread.
class ScreenFit : public QObject {
  public:
    explicit ScreenFit(QWindow& window);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fit();
    void fitSoon();

    QWindow& window_;
    bool wasExposed_ = false;
};

} // namespace tessarune
