#include "TessaruneCore/host/AsyncStream.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/host/Task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {
namespace {

Task<void> waitFor(OneShot<bool> never, std::shared_ptr<int> held) {
    co_await never;
    ++*held;
}
Task<void> waitWithin(SimulatedHost& host, OneShot<bool> never, std::shared_ptr<int> held) {
    Task<void> inner = waitFor(never, std::move(held));
    co_await inner;
    host.post([] { FAIL() << "a task was resumed after the end of its host"; });
}

TEST(TaskTests, EndingAHostDestroysSuspendedTasksAndQueuedBlocks) {
    SimulatedHost host;
    const auto held = std::make_shared<int>(0);
    const OneShot<bool> never(Executor::main(host));
    const auto queue = host.serialQueue("queue", QueuePriority::utility);
    spawn(Executor::main(host), waitWithin(host, never, held));
    host.runUntilIdle();
    spawn(Executor::queue(host, queue), waitFor(never, held)); // has not begun yet
    host.after(1, [held] { ++*held; });
    EXPECT_EQ(host.liveTasks(), 1U);
    EXPECT_EQ(host.waitingBlocks(), 2U);
    EXPECT_GE(held.use_count(), 4);
    host.end();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(host.liveTasks() + host.waitingBlocks(), 0U);
    never.resume(true);
    queue->async([] {});
    host.runUntilIdle();
    EXPECT_EQ(*held, 0);
    bool ran = false;
    queue->sync([&ran] { ran = true; });
    EXPECT_TRUE(ran) << "after the end, sync still runs its block";
}

/// A text that counts its live copies.
struct Witness {
    explicit Witness(std::string itsText) : text(std::move(itsText)) { ++alive; }
    Witness(const Witness& other) : text(other.text) { ++alive; }
    ~Witness() { --alive; }
    std::string text;
    static inline int alive = 0;
};

Task<Witness> described(SimulatedHost& host, Executor worker, Witness what, Executor back) {
    if (host.isOnMainQueue() && what.text.empty())
        throw std::invalid_argument("nothing");
    co_return co_await runOn(
        worker,
        [&] {
            if (what.text.empty())
                throw std::invalid_argument("nothing, elsewhere");
            return Witness(what.text + (host.isOnMainQueue() ? " on main" : " elsewhere"));
        },
        back);
}

Task<void> workElsewhere(SimulatedHost& host, Executor worker, std::vector<std::string>& log) {
    const Executor main = Executor::main(host);
    log.push_back((co_await described(host, worker, Witness("work"), main)).text);
    log.push_back(
        (co_await runOn(worker, described(host, main, Witness("task"), worker), main)).text);
    for (const Executor& from : {main, worker}) {
        try {
            co_await runOn(from, described(host, worker, Witness(""), main), main);
        } catch (const std::invalid_argument& failure) {
            log.push_back(failure.what());
        }
    }
    bool isDone = false;
    co_await runOn(worker, [&] { isDone = !host.isOnMainQueue(); });
    log.push_back(isDone && host.isOnMainQueue() ? "back" : "lost");
}

TEST(TaskTests, WorkRunsOnAnotherQueueAndItsOutcomeComesBack) {
    SimulatedHost host;
    std::vector<std::string> log;
    const auto queue = host.serialQueue("other", QueuePriority::utility);
    spawn(Executor::main(host), workElsewhere(host, Executor::queue(host, queue), log));
    host.runUntilIdle();
    EXPECT_EQ(log, (std::vector<std::string>{"work elsewhere", "task on main", "nothing",
                                             "nothing, elsewhere", "back"}));
    EXPECT_EQ(Witness::alive, 0) << "temporaries beside co_await are destroyed once";
}

Task<void> readAll(AsyncStream<int> stream, std::stop_token stop, std::vector<std::string>& log) {
    try {
        for (;;) {
            const std::optional<int> element = co_await stream.next(stop);
            if (!element)
                break;
            log.push_back(std::to_string(*element));
        }
        log.push_back("end");
    } catch (const std::exception& error) {
        log.push_back(error.what());
    }
}

TEST(AsyncStreamTests, DeliversInOrderAndThenEndsFailsOrStops) {
    struct Case {
        const char* name;
        std::function<void(AsyncStream<int>&, TaskHandle&)> ending;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {"finish", [](auto& stream, auto&) { stream.finish(); }, {"1", "2", "end"}},
        {"fail",
         [](auto& stream, auto&) {
             stream.fail(std::make_exception_ptr(std::runtime_error("broken")));
         },
         {"1", "2", "broken"}},
        {"stop", [](auto&, auto& handle) { handle.cancel(); }, {"1", "2", "end"}},
    };
    for (const auto& c : cases) {
        SimulatedHost host;
        std::vector<std::string> log;
        AsyncStream<int> stream(Executor::main(host));
        std::stop_source stop;
        auto handle = spawn(Executor::main(host), readAll(stream, stop.get_token(), log), stop);
        stream.yield(1);
        host.after(1, [&] { stream.yield(2); });
        host.after(2, [&] { c.ending(stream, handle); });
        host.runUntilIdle();
        EXPECT_EQ(log, c.expected) << c.name;
        EXPECT_TRUE(handle.isFinished()) << c.name;
        EXPECT_EQ(stream.yield(3), std::string(c.name) == "stop") << c.name; // false: it has ended
    }
}

std::vector<int> orderUnder(std::uint64_t seed) {
    SimulatedHost host(0, seed);
    std::vector<int> order;
    auto a = host.serialQueue("a", QueuePriority::standard);
    auto b = host.serialQueue("b", QueuePriority::standard);
    for (int i = 0; i < 4; ++i) {
        a->async([&order, i] { order.push_back(i); });
        b->async([&order, i] { order.push_back(10 + i); });
    }
    host.runUntilIdle();
    return order;
}

TEST(SimulatedHostTests, ASeedFixesTheOrderAndEachQueueKeepsItsOwn) {
    EXPECT_EQ(orderUnder(0), (std::vector<int>{0, 10, 1, 11, 2, 12, 3, 13}));
    bool differed = false;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const auto order = orderUnder(seed);
        EXPECT_EQ(order, orderUnder(seed)) << "seed " << seed;
        differed = differed || order != orderUnder(0);
        std::vector<int> first, second;
        for (int i : order)
            (i < 10 ? first : second).push_back(i);
        EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
        EXPECT_TRUE(std::is_sorted(second.begin(), second.end()));
    }
    EXPECT_TRUE(differed) << "no seed changed the order";
}

} // namespace
} // namespace tessarune
