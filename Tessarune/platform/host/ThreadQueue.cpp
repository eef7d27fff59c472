#include "Tessarune/platform/host/ThreadQueue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <exception>
#include <future>

namespace tessarune {

namespace {

/// Utility work yields to everything that the user waits for.
constexpr int utilityNiceness = 10;

void describeThread(const std::string& label, QueuePriority priority) {
    // The kernel keeps 15 bytes; the end of a label tells more than its common beginning.
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
        const MutexLock lock(state_->mutex);
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
    {
        const MutexLock lock(state_->mutex);
        state_->blocks.push_back(std::move(block));
    }
    state_->arrived.notify_one();
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
    MutexLock lock(state->mutex);
    for (;;) {
        while (!state->ending && state->blocks.empty())
            state->arrived.wait(lock);
        if (state->blocks.empty())
            return;
        Block block = std::move(state->blocks.front());
        state->blocks.pop_front();
        lock.unlock();
        block();
        block = nullptr; // what it held is released outside the lock
        lock.lock();
    }
}

} // namespace tessarune
