#pragma once

#include "Tessarune/platform/host/MainQueue.h"

#include <condition_variable>
#include <thread>

namespace tessarune {

/// A host in real time without a desktop toolkit: the thread that calls `run` runs the main queue.
class LoopHost final : public Host {
  public:
    LoopHost();

    double now() const override { return queue_.now(); }
    double wallClock() const override { return MainQueue::wallClock(); }
    void post(Block block) override { queue_.post(std::move(block)); }
    DelayedCall after(double seconds, Block block) override {
        return queue_.after(seconds, std::move(block));
    }
    std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                             QueuePriority priority) override;
    bool isOnMainQueue() const override { return std::this_thread::get_id() == mainThread_; }

    /// Runs the main queue on the calling thread until `quit`, and returns the status passed to it.
    int run();

    /// Ends `run` after the block that is running. Any thread.
    void quit(int status = 0);

  private:
    std::thread::id mainThread_;
    std::condition_variable_any arrived_;
    MainQueue queue_;
    bool quitting_ = false; // guarded, like status_, by the queue's lock
    int status_ = 0;
};

} // namespace tessarune
