#pragma once

#include "TessaruneCore/host/AsyncStream.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/host/Task.h"

#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune::testing {

namespace detail {
template <typename T>
Task<void> store(Task<T> task, std::optional<T>& result, std::exception_ptr& error) {
    try {
        T value = co_await task;
        result.emplace(std::move(value));
    } catch (...) {
        error = std::current_exception();
    }
}
inline Task<bool> done(Task<void> task) {
    co_await task;
    co_return true;
}

} // namespace detail

/// Runs a task on the main queue in simulated time until the host is idle; returns its value or
/// throws its exception.
template <typename T>
T await(SimulatedHost& host, Task<T> task) {
    std::optional<T> result;
    std::exception_ptr error;
    spawn(Executor::main(host), detail::store(std::move(task), result, error));
    host.runUntilIdle();
    if (error)
        std::rethrow_exception(error);
    if (!result)
        throw std::logic_error("the task never ended");
    return std::move(*result);
}

inline void await(SimulatedHost& host, Task<void> task) {
    await(host, detail::done(std::move(task)));
}

/// Runs a task and notes its state: "running", then "done" or the text of its exception.
inline Task<void> noteOutcome(Task<void> task, std::string* outcome) {
    *outcome = "running";
    try {
        co_await task;
        *outcome = "done";
    } catch (const std::exception& error) {
        *outcome = error.what();
    }
}

/// Collects the elements of a stream until it ends.
template <typename T>
Task<void> takeAll(AsyncStream<T> stream, std::vector<T>* all) {
    for (;;) {
        Task<std::optional<T>> arrival = stream.next();
        std::optional<T> next = co_await arrival;
        if (!next)
            co_return;
        all->push_back(std::move(*next));
    }
}

} // namespace tessarune::testing
