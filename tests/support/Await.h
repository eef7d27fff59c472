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
} // namespace detail

/// Runs a task on the main queue of simulated time until nothing is left to happen, and gives what
/// it gave: its value or its exception.
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

/// Runs a task and notes how it stands: "running", and then "done" or what its error says.
inline Task<void> noteOutcome(Task<void> task, std::string* outcome) {
    *outcome = "running";
    try {
        co_await task;
        *outcome = "done";
    } catch (const std::exception& error) {
        *outcome = error.what();
    }
}

/// Takes all that comes of a stream, until it ends.
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
