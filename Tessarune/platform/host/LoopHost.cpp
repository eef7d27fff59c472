#include "Tessarune/platform/host/LoopHost.h"

#include "Tessarune/platform/host/ThreadQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tessarune {

LoopHost::LoopHost()
    : mainThread_(std::this_thread::get_id()), queue_([this] { arrived_.notify_one(); }) {}

std::shared_ptr<SerialQueue> LoopHost::serialQueue(std::string_view label, QueuePriority priority) {
    return std::make_shared<ThreadQueue>(label, priority);
}

int LoopHost::run() {
    mainThread_ = std::this_thread::get_id();
    for (;;) {
        {
            MutexLock lock(queue_.mutex());
            if (std::exchange(quitting_, false))
                return status_;
            const double wait = std::min(queue_.secondsUntilNext().value_or(MainQueue::longestWait),
                                         MainQueue::longestWait);
            if (wait > 0) {
                arrived_.wait_for(lock, std::chrono::duration<double>(wait));
                continue;
            }
        }
        if (std::optional<Block> next = queue_.takeNext())
            (*next)();
    }
}

void LoopHost::quit(int status) {
    const MutexLock lock(queue_.mutex());
    quitting_ = true;
    status_ = status;
    arrived_.notify_one();
}

} // namespace tessarune
