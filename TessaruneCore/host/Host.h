#pragma once

#include <atomic>
#include <coroutine>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tessarune {

using Block = std::function<void()>;

/// How urgently a serial queue's work is wanted. A host may map it to thread priorities or ignore
/// it.
enum class QueuePriority { userInitiated, standard, utility };

/// Runs blocks one after the other, in the order in which they were handed over.
///
/// Any thread may call; the blocks run on the queue's own thread (or in simulated time). Blocks
/// that are still waiting when the last reference goes away are run before the queue ends.
class SerialQueue {
  public:
    virtual ~SerialQueue() = default;

    virtual void async(Block block) = 0;

    /// Runs `block` after everything handed over before it, and returns when it is done.
    /// Must not be called from a block of the same queue.
    virtual void sync(const Block& block) = 0;

    virtual const std::string& label() const = 0;
};

/// Handle of a delayed call. Copies name the same call; dropping the handle does not cancel it.
class DelayedCall {
  public:
    DelayedCall() = default;
    explicit DelayedCall(std::shared_ptr<std::atomic<bool>> cancelled)
        : cancelled_(std::move(cancelled)) {}

    /// After this the block does not start any more. One that is running goes on.
    void cancel() {
        if (cancelled_)
            cancelled_->store(true);
    }

  private:
    std::shared_ptr<std::atomic<bool>> cancelled_;
};

/// Time, the main queue, delayed calls and serial queues: all that the program above the platform
/// line may know of clocks and threads.
///
/// All operations may be called from any thread. A host outlives everything that was made with it.
class Host {
  public:
    virtual ~Host() = default;

    /// Seconds since 1970, on a clock that never jumps: it starts at the wall clock's value and
    /// then advances with real time, whatever happens to the wall clock. Captions, intervals and
    /// recordings are measured with it.
    virtual double now() const = 0;

    /// Seconds since 1970 as the wall clock says at this moment: for names of files and dates that
    /// a person reads. It may jump either way.
    virtual double wallClock() const = 0;

    /// Runs `block` on the main queue, after what was posted before.
    virtual void post(Block block) = 0;

    /// Runs `block` on the main queue, not before `seconds` have passed.
    virtual DelayedCall after(double seconds, Block block) = 0;

    virtual std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                                     QueuePriority priority) = 0;

    virtual bool isOnMainQueue() const = 0;

    /// `spawn` tells of each frame that it starts, and of its end, on the thread where it happens:
    /// a host that ends before its tasks can then destroy what nobody will ever resume.
    virtual void taskBegan(std::coroutine_handle<>) {}
    virtual void taskEnded(std::coroutine_handle<>) {}
};

} // namespace tessarune
