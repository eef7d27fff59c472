#pragma once

#include <atomic>
#include <coroutine>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tessarune {

using Block = std::function<void()>;

/// The priority of a serial queue's work. A host may map it to thread priorities or ignore it.
enum class QueuePriority { userInitiated, standard, utility };

/// Handle of a delayed call. Copies refer to the same call; destroying the handle does not cancel
/// it.
class DelayedCall {
  public:
    DelayedCall() = default;
    explicit DelayedCall(std::shared_ptr<std::atomic<bool>> cancelled)
        : cancelled_(std::move(cancelled)) {}

    /// Prevents the block from starting; a block that is already running continues.
    void cancel() {
        if (cancelled_)
            cancelled_->store(true);
    }

  private:
    std::shared_ptr<std::atomic<bool>> cancelled_;
};

/// Runs blocks one after the other in the order in which they were queued.
///
/// Any thread may call; the blocks run on the queue's own thread. The destructor runs all queued
/// blocks first. The queues of a `SimulatedHost` differ: their blocks run on the caller's thread,
/// and their destructors run none.
class SerialQueue {
  public:
    virtual ~SerialQueue() = default;

    virtual void async(Block block) = 0;

    /// Runs `block` after all blocks queued before it and returns when it has finished.
    /// Must not be called from a block of the same queue.
    virtual void sync(const Block& block) = 0;

    /// Queues `block` after at least `seconds`. Blocks not yet due when the queue is destroyed
    /// never run.
    virtual DelayedCall after(double seconds, Block block) = 0;

    virtual const std::string& label() const = 0;
};

/// Time, the main queue, delayed calls and serial queues. Only platform code and the front ends use
/// other clocks or threads.
///
/// All operations may be called from any thread. A host must outlive everything created with it.
class Host {
  public:
    virtual ~Host() = default;

    /// Seconds since 1970 on a clock that never jumps: it starts at the wall clock's value and then
    /// advances with real time, even if the wall clock is set. Captions, intervals and recordings
    /// use it.
    virtual double now() const = 0;

    /// Seconds since 1970 on the wall clock, for file names and dates that people read. May jump in
    /// either direction.
    virtual double wallClock() const = 0;

    /// Runs `block` on the main queue after all blocks posted before it.
    virtual void post(Block block) = 0;

    /// Runs `block` on the main queue after at least `seconds`.
    virtual DelayedCall after(double seconds, Block block) = 0;

    virtual std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                                     QueuePriority priority) = 0;

    virtual bool isOnMainQueue() const = 0;

    /// `spawn` calls these when the frame of a spawned task is created and destroyed, on the thread
    /// where that happens. A host that ends before its tasks can thus destroy the suspended frames.
    virtual void taskBegan(std::coroutine_handle<>) {}
    virtual void taskEnded(std::coroutine_handle<>) {}
};

} // namespace tessarune
