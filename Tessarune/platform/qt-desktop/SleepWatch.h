#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <functional>

namespace tessarune {

/// Reports when the computer is about to sleep or shut down, and when it wakes, as announced by the
/// system's login manager. Delays sleep and shutdown until the program is ready, for a few seconds
/// at most. Does nothing without such a manager. On the main thread, while the application object
/// exists.
class SleepWatch : public QObject {
    Q_OBJECT

  public:
    struct Handlers {
        /// This and `willShutDown` must call `ready` when all data that must survive is on the
        /// disk.
        std::function<void(std::function<void()> ready)> willSleep;
        std::function<void()> didWake;
        std::function<void(std::function<void()> ready)> willShutDown;
    };

    /// `bus` is the system bus.
    SleepWatch(QDBusConnection bus, Handlers handlers);

  private Q_SLOTS:
    void PrepareForSleep(bool begins);
    void PrepareForShutdown(bool begins);

  private:
    /// Requests the delay of the next sleep or shutdown.
    void inhibit();
    /// Ends the delay, unless the manager has made another announcement after `announcement`.
    void release(unsigned announcement);

    QDBusConnection bus_;
    const Handlers handlers_;
    QDBusUnixFileDescriptor inhibitor_; // the computer waits while it is open
    unsigned announcement_ = 0;         // the number of the last announcement
};

} // namespace tessarune
