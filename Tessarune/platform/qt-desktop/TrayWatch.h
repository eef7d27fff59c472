#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

namespace tessarune {

/// Reports when the desktop can show items in a tray: at once, or when its panel starts after the
/// program. Main thread, with the application object.
///
/// Qt asks the desktop only once in the life of the process, so do not ask Qt for a tray before
/// this has found one.
class TrayWatch : public QObject {
    Q_OBJECT

  public:
    /// `bus` is the session's. `onTray` is called each time that a tray is found, also after a
    /// panel has restarted.
    TrayWatch(QDBusConnection bus, std::function<void()> onTray);

    /// Whether there is one at this moment.
    bool isThere() const { return isThere_; }

  private Q_SLOTS:
    void ask();

  private:
    QDBusConnection bus_;
    const std::function<void()> onTray_;
    QDBusServiceWatcher services_;
    bool isThere_ = false;
    unsigned gone_ = 0; // how often the service has ended
};

} // namespace tessarune
