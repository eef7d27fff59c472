#pragma once

#include "TessaruneCore/host/Host.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

namespace tessarune {

/// Real time without a desktop toolkit: the main queue is the thread that calls `run`.
///
/// The clock behind `now` and the delayed calls counts the time of a suspended computer too, so
/// that after a resume whatever has become due runs at once.
class LoopHost final : public Host {
  public:
    LoopHost();
    ~LoopHost() override;

    double now() const override;
    double wallClock() const override;
    void post(Block block) override;
    DelayedCall after(double seconds, Block block) override;
    std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                             QueuePriority priority) override;
    bool isOnMainQueue() const override { return std::this_thread::get_id() == mainThread_; }

    /// Runs the main queue on the calling thread until `quit`, and gives its status back.
    int run();

    /// Ends `run` after the block that is running. Callable from any thread.
    void quit(int status = 0);

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

    double sinceBoot() const;

    std::thread::id mainThread_;
    double startedAtBootTime_;
    double startedAtWallClock_;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Block> posted_;
    std::priority_queue<Timer, std::vector<Timer>, std::greater<>> timers_;
    std::uint64_t nextOrder_ = 0;
    bool quitting_ = false;
    int status_ = 0;
};

} // namespace tessarune
