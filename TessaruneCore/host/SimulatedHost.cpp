#include "TessaruneCore/host/SimulatedHost.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

class SimulatedHost::Queue final : public SerialQueue {
  public:
    Queue(SimulatedHost& host, std::size_t lane, std::string_view label)
        : host_(host), lane_(lane), label_(label) {}

    void async(Block block) override { host_.push(lane_, std::move(block)); }

    void sync(const Block& block) override {
        host_.drainLane(lane_);
        const std::size_t caller = std::exchange(host_.runningQueue_, lane_);
        block();
        host_.runningQueue_ = caller;
    }

    DelayedCall after(double seconds, Block block) override {
        return host_.schedule(lane_, seconds, std::move(block));
    }

    const std::string& label() const override { return label_; }

  private:
    SimulatedHost& host_;
    std::size_t lane_;
    std::string label_;
};

SimulatedHost::SimulatedHost(double startTime, std::uint64_t seed)
    : now_(startTime), shuffles_(seed != 0), random_(seed) {
    lanes_.push_back(std::make_shared<Lane>());
}

SimulatedHost::~SimulatedHost() = default;

void SimulatedHost::push(std::size_t lane, Block block) {
    if (!hasEnded_)
        lanes_[lane]->push_back({nextOrder_++, std::move(block)});
}

void SimulatedHost::post(Block block) {
    push(0, std::move(block));
}

DelayedCall SimulatedHost::after(double seconds, Block block) {
    return schedule(0, seconds, std::move(block));
}

DelayedCall SimulatedHost::schedule(std::size_t lane, double seconds, Block block) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    if (hasEnded_)
        return DelayedCall(cancelled);
    timers_.push_back(
        {now_ + std::max(seconds, 0.0), nextOrder_++, std::move(block), cancelled, lane});
    return DelayedCall(cancelled);
}

std::shared_ptr<SerialQueue> SimulatedHost::serialQueue(std::string_view label, QueuePriority) {
    lanes_.push_back(std::make_shared<Lane>());
    return std::make_shared<Queue>(*this, lanes_.size() - 1, label);
}

std::size_t SimulatedHost::pick(std::size_t count) {
    if (!shuffles_ || count == 1)
        return 0;
    return static_cast<std::size_t>(random_() % count);
}

void SimulatedHost::runHead(std::size_t lane) {
    Block block = std::move(lanes_[lane]->front().block);
    lanes_[lane]->pop_front();
    const std::size_t caller = std::exchange(runningQueue_, lane);
    block();
    runningQueue_ = caller;
}

void SimulatedHost::drainLane(std::size_t lane) {
    while (!lanes_[lane]->empty())
        runHead(lane);
}

bool SimulatedHost::step(double limit) {
    std::vector<std::size_t> ready;
    for (std::size_t lane = now_ < mainStallsUntil_ ? 1 : 0; lane < lanes_.size(); ++lane) {
        if (!lanes_[lane]->empty())
            ready.push_back(lane);
    }
    if (!ready.empty()) {
        std::sort(ready.begin(), ready.end(), [&](std::size_t a, std::size_t b) {
            return lanes_[a]->front().order < lanes_[b]->front().order;
        });
        runHead(ready[pick(ready.size())]);
        return true;
    }

    std::erase_if(timers_, [](const Timer& timer) { return timer.cancelled->load(); });
    const auto dueOf = [this](const Timer& timer) {
        return timer.lane == 0 ? std::max(timer.due, mainStallsUntil_) : timer.due;
    };
    double due = std::numeric_limits<double>::infinity();
    for (const Timer& timer : timers_)
        due = std::min(due, dueOf(timer));
    if (!lanes_[0]->empty()) // the main queue stalls
        due = std::min(due, mainStallsUntil_);
    if (due > limit || !std::isfinite(due))
        return false;
    std::vector<std::size_t> together;
    for (std::size_t i = 0; i < timers_.size(); ++i) {
        if (dueOf(timers_[i]) == due)
            together.push_back(i);
    }
    if (together.empty()) {
        now_ = std::max(now_, due);
        return true;
    }
    const std::size_t chosen = together[pick(together.size())];
    Block block = std::move(timers_[chosen].block);
    const std::size_t lane = timers_[chosen].lane;
    timers_.erase(timers_.begin() + static_cast<std::ptrdiff_t>(chosen));
    now_ = std::max(now_, due);
    if (lane != 0) {
        push(lane, std::move(block));
        return true;
    }
    const std::size_t caller = std::exchange(runningQueue_, 0);
    block();
    runningQueue_ = caller;
    return true;
}

void SimulatedHost::end() {
    hasEnded_ = true;
    // Destructors may queue more blocks; these are dropped.
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane)
        Lane().swap(*lanes_[lane]);
    std::vector<Timer>().swap(timers_);
    while (!tasks_.empty()) {
        const auto task = tasks_.back();
        tasks_.pop_back();
        task.destroy();
    }
}

std::size_t SimulatedHost::waitingBlocks() const {
    std::size_t count = 0;
    for (const auto& lane : lanes_)
        count += lane->size();
    for (const Timer& timer : timers_)
        count += timer.cancelled->load() ? 0 : 1;
    return count;
}

void SimulatedHost::runDue(double limit) {
    while (step(limit)) {
    }
}

void SimulatedHost::advanceTo(double time) {
    runDue(time);
    now_ = std::max(now_, time);
}

} // namespace tessarune
