#pragma once

#include <QObject>

namespace tessarune {

/// The desktop's preferences for every window: light or dark colours, text size, reduced motion.
/// Main thread.
class DesktopLook : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    /// The height of the desktop's font in device-independent pixels, limited to a usable range.
    Q_PROPERTY(double bodyPixels READ bodyPixels NOTIFY changed)
    /// The factor by which sizes in fixed pixels grow with the desktop's font; at least 1.
    Q_PROPERTY(double textScale READ textScale NOTIFY changed)
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY changed)

  public:
    DesktopLook();
    bool isDark() const;
    double bodyPixels() const;
    double textScale() const;
    bool reducesMotion() const;
    /// Applies to all windows, whichever QML engine they belong to.
    static void setReducesMotion(bool reduces);

  Q_SIGNALS:
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tessarune
