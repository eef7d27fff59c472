#include "Tessarune/platform/host/ThreadQueue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <future>
#include <optional>

namespace tessarune {

namespace {

/// Utility work yields to everything that the user waits for.
constexpr int utilityNiceness = 10;

void describeThread(const std::string& label, QueuePriority priority) {
    // A thread's name has at most 15 bytes. Labels begin alike, so their last bytes are used.
    const std::size_t kept = std::min<std::size_t>(label.size(), 15);
    pthread_setname_np(pthread_self(), label.substr(label.size() - kept).c_str());
    if (priority == QueuePriority::utility) {
        setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), utilityNiceness);
    }
}

} // namespace

ThreadQueue::ThreadQueue(std::string_view label, QueuePriority priority) : label_(label) {
    thread_ = std::thread([state = state_, name = label_, priority] {
        describeThread(name, priority);
        work(state);
    });
}

ThreadQueue::~ThreadQueue() {
    {
        const MutexLock lock(state_->blocks.mutex());
        state_->ending = true;
    }
    state_->arrived.notify_one();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void ThreadQueue::async(Block block) {
    state_->blocks.post(std::move(block));
}

DelayedCall ThreadQueue::after(double seconds, Block block) {
    return state_->blocks.after(seconds, std::move(block));
}

void ThreadQueue::sync(const Block& block) {
    std::promise<void> done;
    async([&] {
        try {
            block();
            done.set_value();
        } catch (...) {
            done.set_exception(std::current_exception());
        }
    });
    done.get_future().get();
}

void ThreadQueue::work(const std::shared_ptr<State>& state) {
    for (;;) {
        {
            MutexLock lock(state->blocks.mutex());
            const std::optional<double> wait = state->blocks.secondsUntilNext();
            const bool isBlockDue = wait == 0;
            if (state->ending && !isBlockDue)
                return;
            if (!wait)
                state->arrived.wait(lock);
            else if (*wait > 0)
                state->arrived.wait_for(
                    lock, std::chrono::duration<double>(std::min(*wait, MainQueue::longestWait)));
        }
        if (std::optional<Block> next = state->blocks.takeNext())
            (*next)();
    }
}

} // namespace tessarune
