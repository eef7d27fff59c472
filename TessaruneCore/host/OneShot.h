#pragma once

#include "TessaruneCore/host/Executor.h"
#include "TessaruneCore/host/Mutex.h"

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace tessarune {

/// A value that arrives once: the first `resume` stores it and wakes the waiter, later calls do
/// nothing. Used where several events race.
///
/// `resume` may be called from any thread; the waiter resumes on the executor given at
/// construction. Copies share the slot.
template <typename T>
class OneShot {
  public:
    explicit OneShot(Executor executor) : state_(std::make_shared<State>(std::move(executor))) {}

    void resume(T value) const {
        std::coroutine_handle<> waiter;
        {
            const MutexLock lock(state_->mutex);
            if (state_->value)
                return;
            state_->value.emplace(std::move(value));
            waiter = std::exchange(state_->waiter, nullptr);
        }
        if (waiter)
            state_->executor.run([waiter] { waiter.resume(); });
    }

    bool hasValue() const {
        const MutexLock lock(state_->mutex);
        return state_->value.has_value();
    }

    /// Awaitable by one coroutine, which continues at once if the value has already arrived.
    auto operator co_await() const { return Awaiter{state_}; }

  private:
    struct State {
        explicit State(Executor where) : executor(std::move(where)) {}
        Executor executor;
        Mutex mutex;
        std::optional<T> value GUARDED_BY(mutex);
        std::coroutine_handle<> waiter GUARDED_BY(mutex);
    };

    struct Awaiter {
        std::shared_ptr<State> state;

        bool await_ready() const {
            const MutexLock lock(state->mutex);
            return state->value.has_value();
        }
        bool await_suspend(std::coroutine_handle<> caller) const {
            const MutexLock lock(state->mutex);
            if (state->value)
                return false;
            state->waiter = caller;
            return true;
        }
        T await_resume() const {
            const MutexLock lock(state->mutex);
            return *state->value;
        }
    };

    std::shared_ptr<State> state_;
};

} // namespace tessarune
