#pragma once

#include "TessaruneCore/host/Executor.h"
#include "TessaruneCore/host/OneShot.h"

#include <coroutine>
#include <exception>
#include <optional>
#include <stop_token>
#include <utility>

namespace tessarune {

/// An asynchronous step whose code reads from top to bottom.
///
/// A task does nothing until it is awaited (or given to `spawn`), runs on the awaiting thread until
/// its first suspension, and passes its result or its exception to the awaiting coroutine. It owns
/// its frame; dropping a task that is not awaited destroys the frame. Every suspension names the
/// executor on which the task resumes, so its code always knows its thread.
///
/// Write coroutines as functions with parameters by value, never as lambdas with captures: the
/// frame outlives the lambda's captures and the objects that references refer to.
///
/// GCC 12 destroys some temporaries of an expression with `co_await` twice: those built without
/// calling a constructor or a function. These are a lambda whose captures have destructors, an
/// aggregate (`{a, b}`), the result of `a ? b : c` and a thrown object. Make such a value a
/// variable in a statement of its own. All other temporaries are safe:
/// `f(co_await g(std::string("x")))`.
template <typename T = void>
class Task;

namespace taskDetail {

struct TaskPromiseBase {
    std::coroutine_handle<> continuation;
    std::exception_ptr failure;

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) noexcept {
            auto next = finished.promise().continuation;
            return next ? next : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };

    std::suspend_always initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }
    void unhandled_exception() { failure = std::current_exception(); }
};

template <typename T>
struct TaskPromise : TaskPromiseBase {
    std::optional<T> value;

    Task<T> get_return_object();
    void return_value(T result) { value.emplace(std::move(result)); }
    T take() {
        if (failure)
            std::rethrow_exception(failure);
        return std::move(*value);
    }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void take() const {
        if (failure)
            std::rethrow_exception(failure);
    }
};

} // namespace taskDetail

template <typename T>
class [[nodiscard]] Task {
  public:
    using promise_type = taskDetail::TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle) : handle_(handle) {}
    Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        if (this != &other) {
            destroy();
            handle_ = std::exchange(other.handle_, nullptr);
        }
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() { destroy(); }

    struct Awaiter {
        Handle handle;
        bool await_ready() const noexcept { return false; }
        std::coroutine_handle<> await_suspend(std::coroutine_handle<> caller) const noexcept {
            handle.promise().continuation = caller;
            return handle;
        }
        T await_resume() const { return handle.promise().take(); }
    };
    Awaiter operator co_await() const noexcept { return Awaiter{handle_}; }

  private:
    void destroy() {
        if (handle_)
            handle_.destroy();
    }
    Handle handle_;
};

namespace taskDetail {

template <typename T>
Task<T> TaskPromise<T>::get_return_object() {
    return Task<T>(std::coroutine_handle<TaskPromise<T>>::from_promise(*this));
}
inline Task<void> TaskPromise<void>::get_return_object() {
    return Task<void>(std::coroutine_handle<TaskPromise<void>>::from_promise(*this));
}

/// The coroutine that awaits a spawned task. It starts at once and frees its frame at the end,
/// together with the frames of everything that the task awaits.
struct Detached {
    struct promise_type {
        promise_type(const Task<void>&, const OneShot<bool>&, Host& on) : host(on) {}
        ~promise_type() {
            host.taskEnded(std::coroutine_handle<promise_type>::from_promise(*this));
        }
        promise_type(const promise_type&) = delete;
        promise_type& operator=(const promise_type&) = delete;
        Host& host;

        Detached get_return_object() {
            host.taskBegan(std::coroutine_handle<promise_type>::from_promise(*this));
            return {};
        }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        void unhandled_exception() const { std::terminate(); }
    };
};

Detached runDetached(Task<void> task, OneShot<bool> finished, Host& host);

} // namespace taskDetail

/// A handle of a spawned task: it can request a stop, and its end can be awaited. Copies refer to
/// the same task; dropping the handle does not affect the task.
class TaskHandle {
  public:
    TaskHandle(std::stop_source stop, OneShot<bool> finished)
        : stop_(std::move(stop)), finished_(std::move(finished)) {}

    /// Requests a stop. The task sees it at its next check of the stop token, and a wait with the
    /// token ends early.
    void cancel() { stop_.request_stop(); }
    bool isFinished() const { return finished_.hasValue(); }

    /// `co_await handle.finished()`: resumes when the task is over, on the executor given to
    /// `spawn`; does not suspend if it is over already.
    OneShot<bool>& finished() { return finished_; }

  private:
    std::stop_source stop_;
    OneShot<bool> finished_;
};

/// Starts `task` on `executor`, independent of the caller. The task must not end with an exception:
/// an unhandled failure is a defect and terminates the program. `stop` is the source of the token
/// that the task was given, if any.
TaskHandle spawn(const Executor& executor, Task<void> task, std::stop_source stop = {});

/// `co_await switchTo(executor)`: the coroutine resumes there.
struct SwitchTo {
    Executor executor;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> caller) const {
        executor.run([caller] { caller.resume(); });
    }
    void await_resume() const noexcept {}
};
inline SwitchTo switchTo(Executor executor) {
    return SwitchTo{std::move(executor)};
}

/// `co_await sleep(executor, seconds, stop)`: true after the time has passed, false as soon as the
/// token requests a stop. Resumes on `executor`; does not suspend if a stop was already requested.
Task<bool> sleep(Executor executor, double seconds, std::stop_token stop = {});

} // namespace tessarune
