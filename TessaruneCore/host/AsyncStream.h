#pragma once

#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/host/Task.h"

#include <coroutine>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

namespace tessarune {

/// A sequence whose elements arrive over time. Producers `yield` from any thread; one consumer
/// awaits `next` and resumes on the executor given at construction. Copies share the stream.
template <typename T>
class AsyncStream {
  public:
    explicit AsyncStream(Executor executor)
        : state_(std::make_shared<State>(std::move(executor))) {}

    /// Returns false, and drops the element, if the stream has ended.
    bool yield(T element) const {
        std::coroutine_handle<> ready;
        {
            const MutexLock lock(state_->mutex);
            if (state_->ended)
                return false;
            state_->elements.push_back(std::move(element));
            ready = std::exchange(state_->waiter, nullptr);
        }
        state_->wake(ready);
        return true;
    }

    /// Ends the stream; queued elements are still delivered.
    void finish() const { end(nullptr); }

    /// Like `finish`, but after the queued elements, `next` throws `failure` once.
    void fail(std::exception_ptr failure) const { end(std::move(failure)); }

    bool isFinished() const {
        const MutexLock lock(state_->mutex);
        return state_->ended;
    }

    /// The number of queued elements.
    std::size_t queuedCount() const {
        const MutexLock lock(state_->mutex);
        return state_->elements.size();
    }

    bool operator==(const AsyncStream& other) const { return state_ == other.state_; }

    /// `co_await stream.next(stop)`: the next element, or `nullopt` at the end or on cancellation.
    Task<std::optional<T>> next(std::stop_token stop = {}) const {
        return nextOf(state_, std::move(stop));
    }

  private:
    struct State {
        explicit State(Executor where) : executor(std::move(where)) {}

        void wake(std::coroutine_handle<> ready) {
            if (ready)
                executor.run([ready] { ready.resume(); });
        }

        Executor executor;
        Mutex mutex;
        std::deque<T> elements GUARDED_BY(mutex);
        bool ended GUARDED_BY(mutex) = false;
        std::exception_ptr failure GUARDED_BY(mutex);
        std::coroutine_handle<> waiter GUARDED_BY(mutex);
    };

    struct Wake {
        std::shared_ptr<State> state;
        void operator()() const {
            std::coroutine_handle<> ready;
            {
                const MutexLock lock(state->mutex);
                ready = std::exchange(state->waiter, nullptr);
            }
            state->wake(ready);
        }
    };

    struct Awaiter {
        State& state;
        const std::stop_token& stop;

        bool await_ready() const noexcept { return false; }
        bool await_suspend(std::coroutine_handle<> caller) const {
            const MutexLock lock(state.mutex);
            if (stop.stop_requested() || !state.elements.empty() || state.ended)
                return false;
            state.waiter = caller;
            return true;
        }
        void await_resume() const noexcept {}
    };

    void end(std::exception_ptr failure) const {
        std::coroutine_handle<> ready;
        {
            const MutexLock lock(state_->mutex);
            if (std::exchange(state_->ended, true))
                return;
            state_->failure = std::move(failure);
            ready = std::exchange(state_->waiter, nullptr);
        }
        state_->wake(ready);
    }

    static Task<std::optional<T>> nextOf(std::shared_ptr<State> state, std::stop_token stop) {
        // The callback is registered before the coroutine suspends. A stop request between the two
        // finds no waiter, but the awaiter checks the token before it suspends the coroutine.
        std::stop_callback<Wake> onStop(stop, Wake{state});
        Awaiter arrival{*state, stop};
        co_await arrival;
        const MutexLock lock(state->mutex);
        if (stop.stop_requested())
            co_return std::nullopt;
        if (!state->elements.empty()) {
            std::optional<T> element(std::move(state->elements.front()));
            state->elements.pop_front();
            co_return element;
        }
        if (state->failure)
            std::rethrow_exception(std::exchange(state->failure, nullptr));
        co_return std::nullopt;
    }

    std::shared_ptr<State> state_;
};

} // namespace tessarune
