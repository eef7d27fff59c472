#pragma once

#include "TessaruneCore/host/Host.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <random>
#include <vector>

namespace tessarune {

/// A host in virtual time: single-threaded, without waiting, deterministic.
///
/// Blocks run only inside `step`, `run…`, `advance…` and `SerialQueue::sync`, and time advances
/// from one due time to the next. Where several blocks could run at the same time (blocks of
/// different queues, delayed calls with equal due times), the seed decides; seed 0 runs them in the
/// order in which they were queued. The queued blocks of one queue always keep their order.
///
/// Not thread-safe: everything runs on the caller's thread. Destroying a queue neither runs nor
/// drops its blocks.
class SimulatedHost final : public Host {
  public:
    explicit SimulatedHost(double startTime = 0, std::uint64_t seed = 0);
    ~SimulatedHost() override;

    double now() const override { return now_; }
    double wallClock() const override { return now_ + wallClockOffset_; }
    void post(Block block) override;
    DelayedCall after(double seconds, Block block) override;
    std::shared_ptr<SerialQueue> serialQueue(std::string_view label, QueuePriority) override;
    bool isOnMainQueue() const override { return runningQueue_ == 0; }
    void taskBegan(std::coroutine_handle<> task) override { tasks_.push_back(task); }
    void taskEnded(std::coroutine_handle<> task) override { std::erase(tasks_, task); }

    /// Runs everything that is due up to and including `limit`. The clock stops at the last due
    /// time reached; see `advanceTo`.
    void runDue(double limit);

    /// Like `runDue`, then sets the clock to `time` if that is later.
    void advanceTo(double time);
    void advanceBy(double seconds) { advanceTo(now_ + seconds); }

    /// Runs until nothing is queued or scheduled, or until `limit`.
    void runUntilIdle(double limit = std::numeric_limits<double>::max()) { runDue(limit); }

    /// Runs the next block that is due up to `limit`, or moves a due delayed call to its queue;
    /// false if there is nothing to do.
    bool step(double limit = std::numeric_limits<double>::max());

    /// Sets the wall clock forward or back, as a user or a time server does; `now` is unaffected.
    void shiftWallClock(double seconds) { wallClockOffset_ += seconds; }

    /// Simulates a suspended computer: both clocks advance, and delayed calls due meanwhile run
    /// late.
    void sleepComputer(double seconds) { now_ += seconds; }

    /// Delays all blocks of the main queue by up to `seconds`, while other queues run.
    void stallMainQueue(double seconds) { mainStallsUntil_ = now_ + seconds; }

    /// Destroys all suspended tasks and queued blocks. Afterwards only `sync` runs blocks. Objects
    /// that the suspended tasks refer to must still exist.
    void end();

    /// The numbers of suspended tasks and of queued and delayed blocks, which must level off in a
    /// long session.
    std::size_t liveTasks() const { return tasks_.size(); }
    std::size_t waitingBlocks() const;

    /// Random numbers from the seed, for scripted participants of the simulation.
    std::mt19937_64& random() { return random_; }

  private:
    class Queue;
    struct Ready {
        std::uint64_t order;
        Block block;
    };
    struct Timer {
        double due;
        std::uint64_t order;
        Block block;
        std::shared_ptr<std::atomic<bool>> cancelled;
        std::size_t lane; ///< the lane on which the block runs
    };
    using Lane = std::deque<Ready>;

    void push(std::size_t lane, Block block);
    DelayedCall schedule(std::size_t lane, double seconds, Block block);
    void runHead(std::size_t lane);
    void drainLane(std::size_t lane);
    std::size_t pick(std::size_t count);

    double now_;
    double wallClockOffset_ = 0;
    double mainStallsUntil_ = -std::numeric_limits<double>::infinity();
    bool hasEnded_ = false;
    std::uint64_t nextOrder_ = 0;
    bool shuffles_;
    std::mt19937_64 random_;
    std::vector<std::shared_ptr<Lane>> lanes_; // one per queue; lane 0 is the main queue
    std::vector<Timer> timers_;
    std::vector<std::coroutine_handle<>> tasks_;
    std::size_t runningQueue_ = 0;
};

} // namespace tessarune
