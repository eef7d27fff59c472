#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Mutex.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <queue>
#include <vector>

namespace tessarune {

/// The clocks, posted blocks and delayed calls behind a host's main queue, or behind the queue of
/// another thread; that adds the loop that runs them. Any thread may add, one thread runs.
///
/// The clock behind `now` and the delayed calls includes the time of a suspended computer, so that
/// everything that became due runs right after a resume.
class MainQueue {
  public:
    /// `arrived` is called, with the queue's lock held, whenever something was added: from any
    /// thread, and it must not call back.
    explicit MainQueue(std::function<void()> arrived);

    double now() const;
    static double wallClock();

    void post(Block block);
    DelayedCall after(double seconds, Block block);

    /// The next block that may run now: delayed calls that are due come first.
    std::optional<Block> takeNext();
    /// Held while `arrived` is called. A loop takes it to look for work and waits with it.
    Mutex& mutex() RETURNS_LOCK(mutex_) { return mutex_; }
    /// Seconds until a block may run, 0 if one may run now; `nullopt` if nothing is queued.
    std::optional<double> secondsUntilNext() REQUIRES_LOCK(mutex_);
    /// The maximum sleep of a loop: the clocks that threads sleep by stop while the computer is
    /// suspended, and this bounds how late a delayed call runs after it.
    static constexpr double longestWait = 1.0;

  private:
    struct Timer {
        double due;
        std::uint64_t order;
        std::shared_ptr<Block> block;
        std::shared_ptr<std::atomic<bool>> cancelled;
        bool operator>(const Timer& other) const {
            return due != other.due ? due > other.due : order > other.order;
        }
    };
    void dropCancelledTimers() REQUIRES_LOCK(mutex_);

    const std::function<void()> arrived_;
    const double startedAtBootTime_;
    const double startedAtWallClock_;
    Mutex mutex_;
    std::deque<Block> posted_ GUARDED_BY(mutex_);
    std::priority_queue<Timer, std::vector<Timer>, std::greater<>> timers_ GUARDED_BY(mutex_);
    std::uint64_t nextOrder_ GUARDED_BY(mutex_) = 0;
};

} // namespace tessarune
