#pragma once

#include "TessaruneCore/host/Task.h"

#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

namespace tessarune {

/// `co_await runOn(worker, [&] { … }, back)`: runs `work` on `worker` and resumes on `back` with
/// the result or the exception of `work`.
///
/// `work` captures by reference; the awaiting coroutine keeps the captured objects alive. The work
/// begins when the returned task is awaited.
template <typename Work>
Task<std::invoke_result_t<Work&>> runOn(Executor worker, Work work, Executor back) {
    static_assert(std::is_trivially_destructible_v<Work>,
                  "capture by reference: a capture with a destructor is destroyed twice by GCC 12");
    using Result = std::invoke_result_t<Work&>;
    std::conditional_t<std::is_void_v<Result>, std::nullptr_t, std::optional<Result>> result;
    std::exception_ptr failure;
    co_await switchTo(std::move(worker));
    try {
        if constexpr (std::is_void_v<Result>) {
            work();
        } else {
            result.emplace(work());
        }
    } catch (...) {
        failure = std::current_exception();
    }
    co_await switchTo(std::move(back));
    if (failure)
        std::rethrow_exception(failure);
    if constexpr (!std::is_void_v<Result>)
        co_return std::move(*result);
}

/// The same for a task, which starts on `worker`.
template <typename T>
Task<T> runOn(Executor worker, Task<T> work, Executor back) {
    std::conditional_t<std::is_void_v<T>, std::nullptr_t, std::optional<T>> result;
    std::exception_ptr failure;
    co_await switchTo(std::move(worker));
    try {
        if constexpr (std::is_void_v<T>) {
            co_await work;
        } else {
            result.emplace(co_await work);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    co_await switchTo(std::move(back));
    if (failure)
        std::rethrow_exception(failure);
    if constexpr (!std::is_void_v<T>)
        co_return std::move(*result);
}

/// The same, resuming on the main queue.
template <typename Work>
auto runOn(Executor worker, Work work) {
    const Executor main = Executor::main(worker.host());
    return runOn(std::move(worker), std::move(work), main);
}

/// Like `runOn`, for work that may hang. Returns true when the work has ended; abandons it after
/// `seconds` and returns false. The work must own its captures, which are released before this
/// returns true or throws the work's exception.
Task<bool> runOnWithin(Executor worker, double seconds, Block work, Executor back);

} // namespace tessarune
