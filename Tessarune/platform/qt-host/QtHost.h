#pragma once

#include "Tessarune/platform/host/MainQueue.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <functional>

namespace tessarune {

/// A host in real time for a desktop program: the main queue runs on the thread of Qt's event loop,
/// between the toolkit's own events.
///
/// Created on that thread after the application object, and destroyed before it.
class QtHost final : public QObject, public Host {
  public:
    QtHost();
    ~QtHost() override;

    double now() const override { return queue_.now(); }
    double wallClock() const override { return MainQueue::wallClock(); }
    void post(Block block) override { queue_.post(std::move(block)); }
    DelayedCall after(double seconds, Block block) override {
        return queue_.after(seconds, std::move(block));
    }
    std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                             QueuePriority priority) override;
    bool isOnMainQueue() const override;

    /// Runs the main queue without the toolkit, which may no longer be usable, until `isDone`
    /// returns true, but for at most `seconds`.
    void runByItself(const std::function<bool()>& isDone, double seconds);

  protected:
    bool event(QEvent* event) override;

  private:
    /// Asks the event loop to call `runDue`; repeated requests are combined. Any thread.
    void wake();
    void runDue();
    void armTimer();

    std::atomic<bool> wakePending_ = false;
    MainQueue queue_;
    QTimer timer_; // until the next delayed call is due
};

} // namespace tessarune
