#pragma once

#include <QObject>

namespace tessarune {

/// What the desktop asks of every window: light or dark, the size of its text, and whether things
/// move. Main thread.
class DesktopLook : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    /// The height of the desktop's own font, in pixels at a scale of 1.
    Q_PROPERTY(double bodyPixels READ bodyPixels NOTIFY changed)
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY changed)

  public:
    DesktopLook();
    bool isDark() const;
    double bodyPixels() const;
    bool reducesMotion() const;
    /// For the windows of all engines.
    static void setReducesMotion(bool reduces);

  Q_SIGNALS:
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tessarune
