#include "Tessarune/platform/host/LoopHost.h"

#include "Tessarune/platform/host/ThreadQueue.h"

#include <time.h>

#include <algorithm>
#include <chrono>

namespace tessarune {

namespace {

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The condition variable's clock stands still while the computer sleeps; waking now and then
/// bounds how late a delayed call can run after a resume.
constexpr double longestWait = 1.0;

} // namespace

LoopHost::LoopHost()
    : mainThread_(std::this_thread::get_id()),
      startedAtBootTime_(seconds(CLOCK_BOOTTIME)),
      startedAtWallClock_(seconds(CLOCK_REALTIME)) {}

LoopHost::~LoopHost() = default;

double LoopHost::sinceBoot() const {
    return seconds(CLOCK_BOOTTIME);
}

double LoopHost::now() const {
    return startedAtWallClock_ + (sinceBoot() - startedAtBootTime_);
}

double LoopHost::wallClock() const {
    return seconds(CLOCK_REALTIME);
}

// All notify with the lock held: the block may be what ends the program, and then the host is gone
// as soon as the lock is free.

void LoopHost::post(Block block) {
    std::lock_guard lock(mutex_);
    posted_.push_back(std::move(block));
    arrived_.notify_one();
}

DelayedCall LoopHost::after(double delay, Block block) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    std::lock_guard lock(mutex_);
    timers_.push({sinceBoot() + std::max(delay, 0.0), nextOrder_++,
                  std::make_shared<Block>(std::move(block)), cancelled});
    arrived_.notify_one();
    return DelayedCall(cancelled);
}

std::shared_ptr<SerialQueue> LoopHost::serialQueue(std::string_view label, QueuePriority priority) {
    return std::make_shared<ThreadQueue>(label, priority);
}

int LoopHost::run() {
    mainThread_ = std::this_thread::get_id();
    std::unique_lock lock(mutex_);
    while (!quitting_) {
        Block next;
        if (!timers_.empty() && timers_.top().cancelled->load()) {
            timers_.pop();
            continue;
        }
        if (!timers_.empty() && timers_.top().due <= sinceBoot()) {
            next = std::move(*timers_.top().block);
            timers_.pop();
        } else if (!posted_.empty()) {
            next = std::move(posted_.front());
            posted_.pop_front();
        } else {
            const double wait = timers_.empty()
                                    ? longestWait
                                    : std::min(timers_.top().due - sinceBoot(), longestWait);
            arrived_.wait_for(lock, std::chrono::duration<double>(std::max(wait, 0.0)));
            continue;
        }
        lock.unlock();
        next();
        next = nullptr;
        lock.lock();
    }
    quitting_ = false;
    return status_;
}

void LoopHost::quit(int status) {
    std::lock_guard lock(mutex_);
    quitting_ = true;
    status_ = status;
    arrived_.notify_one();
}

} // namespace tessarune
