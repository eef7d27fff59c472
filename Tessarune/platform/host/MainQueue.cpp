#include "Tessarune/platform/host/MainQueue.h"

#include <time.h>

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double sinceBoot() {
    return seconds(CLOCK_BOOTTIME);
}

} // namespace

MainQueue::MainQueue(std::function<void()> arrived)
    : arrived_(std::move(arrived)),
      startedAtBootTime_(sinceBoot()),
      startedAtWallClock_(wallClock()) {}

double MainQueue::now() const {
    return startedAtWallClock_ + (sinceBoot() - startedAtBootTime_);
}

double MainQueue::wallClock() {
    return seconds(CLOCK_REALTIME);
}

// `post` and `after` call `arrived_` with the lock held. Once the lock is free, the loop may run
// the block; if the block ends the program, this queue is destroyed.

void MainQueue::post(Block block) {
    const MutexLock held(mutex_);
    posted_.push_back(std::move(block));
    arrived_();
}

DelayedCall MainQueue::after(double delay, Block block) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    const MutexLock held(mutex_);
    timers_.push({sinceBoot() + std::max(delay, 0.0), nextOrder_++,
                  std::make_shared<Block>(std::move(block)), cancelled});
    arrived_();
    return DelayedCall(cancelled);
}

void MainQueue::dropCancelledTimers() {
    while (!timers_.empty() && timers_.top().cancelled->load())
        timers_.pop();
}

std::optional<Block> MainQueue::takeNext() {
    const MutexLock held(mutex_);
    dropCancelledTimers();
    std::optional<Block> next;
    if (!timers_.empty() && timers_.top().due <= sinceBoot()) {
        next = std::move(*timers_.top().block);
        timers_.pop();
    } else if (!posted_.empty()) {
        next = std::move(posted_.front());
        posted_.pop_front();
    }
    return next;
}

std::optional<double> MainQueue::secondsUntilNext() {
    dropCancelledTimers();
    if (!posted_.empty())
        return 0;
    if (timers_.empty())
        return std::nullopt;
    return std::max(timers_.top().due - sinceBoot(), 0.0);
}

} // namespace tessarune
