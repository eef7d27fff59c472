#pragma once

#include "Tessarune/platform/host/MainQueue.h"
#include "TessaruneCore/host/Host.h"

#include <condition_variable>
#include <memory>
#include <thread>

namespace tessarune {

/// A serial queue with its own thread. The destructor waits for all queued blocks and drops delayed
/// calls that are not due yet. If it runs on the queue's own thread, it does not wait: the thread
/// runs the remaining blocks and then ends.
class ThreadQueue final : public SerialQueue {
  public:
    ThreadQueue(std::string_view label, QueuePriority priority);
    ~ThreadQueue() override;
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;

    void async(Block block) override;
    void sync(const Block& block) override;
    DelayedCall after(double seconds, Block block) override;
    const std::string& label() const override { return label_; }

  private:
    struct State {
        std::condition_variable_any arrived;
        MainQueue blocks{[this] { arrived.notify_one(); }};
        bool ending GUARDED_BY(blocks.mutex()) = false;
    };
    static void work(const std::shared_ptr<State>& state);

    std::string label_;
    std::shared_ptr<State> state_ = std::make_shared<State>();
    std::thread thread_;
};

} // namespace tessarune
