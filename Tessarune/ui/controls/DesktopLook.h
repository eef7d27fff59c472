#pragma once

#include <QObject>

namespace tessarune {

/// What the desktop asks of every window: light or dark, and the size of its text. Main thread.
class DesktopLook : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    /// The height of the desktop's own font, in pixels at a scale of 1.
    Q_PROPERTY(double bodyPixels READ bodyPixels NOTIFY changed)

  public:
    DesktopLook();
    bool isDark() const;
    double bodyPixels() const;

  Q_SIGNALS:
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tessarune
