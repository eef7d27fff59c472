#pragma once

#include "TessaruneCore/host/Host.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <random>
#include <vector>

namespace tessarune {

/// A host in virtual time: one thread, no waiting, the same course every time.
///
/// Nothing runs but inside `run…`. Time advances only from one due time to the next. Where several
/// things could happen next at the same time (blocks of different queues, delayed calls that are
/// due together), the seed decides; seed 0 takes them in the order in which they were handed over.
/// One queue's blocks always keep their order.
///
/// Not thread-safe: everything happens on the caller's thread.
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

    /// Runs everything that is due up to and including `limit`. The clock stays at the last due
    /// time that was reached; see `advanceTo`.
    void runDue(double limit);

    /// As `runDue`, and then sets the clock to `time` if it is later.
    void advanceTo(double time);
    void advanceBy(double seconds) { advanceTo(now_ + seconds); }

    /// Runs until nothing is left to happen, or until `limit`.
    void runUntilIdle(double limit = std::numeric_limits<double>::max()) { runDue(limit); }

    /// Runs the next single thing that is due up to `limit`; false if there is none.
    bool step(double limit = std::numeric_limits<double>::max());

    /// Sets the wall clock ahead or back, as a user or a time server does; `now` does not move.
    void shiftWallClock(double seconds) { wallClockOffset_ += seconds; }

    /// The computer sleeps: both clocks go on, and delayed calls that were due meanwhile come late.
    void sleepComputer(double seconds) { now_ += seconds; }

    /// Destroys all that is suspended or waits to be run. Nothing runs after it but what `sync`
    /// brings. What the suspended tasks refer to must still be there.
    void end();

    /// How much is suspended, and how much waits to be run: what must level off in a long session.
    std::size_t liveTasks() const { return tasks_.size(); }
    std::size_t waitingBlocks() const;

    /// The seed's random numbers, for scripted partners of the simulation.
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
    };
    using Lane = std::deque<Ready>;

    void push(std::size_t lane, Block block);
    void runHead(std::size_t lane);
    void drainLane(std::size_t lane);
    std::size_t pick(std::size_t count);

    double now_;
    double wallClockOffset_ = 0;
    bool hasEnded_ = false;
    std::uint64_t nextOrder_ = 0;
    bool shuffles_;
    std::mt19937_64 random_;
    std::vector<std::shared_ptr<Lane>> lanes_; // lane 0 is the main queue
    std::vector<Timer> timers_;
    std::vector<std::coroutine_handle<>> tasks_;
    std::size_t runningQueue_ = 0;
};

} // namespace tessarune
