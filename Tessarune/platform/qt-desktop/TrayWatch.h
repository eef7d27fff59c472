#pragma once

#include <QAbstractNativeEventFilter>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

namespace tessarune {

/// Reports when the desktop can show items in a tray: soon after the program's start, or later if
/// the desktop's panel starts after the program. A tray of the older kind, which embeds X11
/// windows, is reported only if it starts after the program. On the main thread, while the
/// application object exists.
///
/// Qt checks for a tray only once in the life of the process, so do not ask Qt for one before this
/// class or X11Desktop::hasTray has found it.
class TrayWatch : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// `bus` is the session bus. `onTray` is called each time a tray is found, also after the panel
    /// has restarted.
    TrayWatch(QDBusConnection bus, std::function<void()> onTray);
    ~TrayWatch() override;

    /// Whether there is now a tray of the newer kind (a service on the session bus).
    /// X11Desktop::hasTray finds the older kind.
    bool isThere() const { return isThere_; }

  private Q_SLOTS:
    void ask();

  private:
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

    QDBusConnection bus_;
    const std::function<void()> onTray_;
    QDBusServiceWatcher services_;
    bool isThere_ = false;
    unsigned epoch_ = 0; // counts how often the service has ended
};

} // namespace tessarune
