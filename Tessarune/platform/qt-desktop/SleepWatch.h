#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <functional>

namespace tessarune {

/// Learns from the system's login manager when the computer is about to sleep or shut down, and
/// delays that for a few seconds at most, until the program is ready. Does nothing without such a
/// manager. Main thread, with the application object.
class SleepWatch : public QObject {
    Q_OBJECT

  public:
    struct Handlers {
        /// Calls `ready` when everything that must survive is on the disk.
        std::function<void(std::function<void()> ready)> willSleep;
        std::function<void()> didWake;
        std::function<void(std::function<void()> ready)> willShutDown;
    };

    /// `bus` is the system's.
    SleepWatch(QDBusConnection bus, Handlers handlers);

  private Q_SLOTS:
    void PrepareForSleep(bool begins);
    void PrepareForShutdown(bool begins);

  private:
    void hold();
    /// The program is ready for the sleep or the shutdown that was announced then.
    void release(unsigned announcement);

    QDBusConnection bus_;
    const Handlers handlers_;
    QDBusUnixFileDescriptor held_; // while it is open the computer waits
    unsigned announcement_ = 0;    // the last one
};

} // namespace tessarune
