#pragma once

#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/host/Task.h"

#include <exception>
#include <optional>
#include <stdexcept>

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

} // namespace tessarune::testing
