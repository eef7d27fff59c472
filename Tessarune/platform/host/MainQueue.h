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

/// The clocks, posted blocks and delayed calls of a host's main queue, or of another thread's
/// queue; the owner adds the loop that runs them. Any thread may add blocks, one thread runs them.
///
/// The clock of `now` and of the delayed calls includes the time while the computer is suspended,
/// so that calls which became due meanwhile run within `longestWait` of the resume.
class MainQueue {
  public:
    /// `arrived` is called with the queue's lock held whenever a block has been added, on the
    /// thread that added it. It must not call the queue.
    explicit MainQueue(std::function<void()> arrived);

    double now() const;
    static double wallClock();

    void post(Block block);
    DelayedCall after(double seconds, Block block);

    /// Removes and returns the next block that may run now; delayed calls that are due come first.
    /// `nullopt` if there is none.
    std::optional<Block> takeNext();
    /// The lock, which is held while `arrived` is called. The loop takes it to call
    /// `secondsUntilNext`, and may use it to wait on a condition variable.
    Mutex& mutex() RETURNS_LOCK(mutex_) { return mutex_; }
    /// Seconds until a block may run, 0 if one may run now; `nullopt` if nothing is queued.
    std::optional<double> secondsUntilNext() REQUIRES_LOCK(mutex_);
    /// The maximum sleep of a loop in seconds. The clock of a thread's sleep stands still while the
    /// computer is suspended; this maximum bounds how late a delayed call runs after the resume.
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
