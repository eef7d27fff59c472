#pragma once

#include "Tessarune/audio/SoundServer.h"

#include <pulse/pulseaudio.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The outcome of a server operation: status 0 for success.
struct PulseOutcome {
    int status = 0;
    std::string text;

    void throwIfFailed() const {
        if (status != 0)
            throw SoundServerError(status, text);
    }
};

/// The outcome for one of libpulse's error numbers, in its own words.
PulseOutcome pulseOutcome(int status);

/// Holds the main loop's lock. On the loop's own thread, where the lock is held already, it does
/// nothing.
class PulseLock {
  public:
    explicit PulseLock(pa_threaded_mainloop* loop)
        : loop_(pa_threaded_mainloop_in_thread(loop) != 0 ? nullptr : loop) {
        if (loop_)
            pa_threaded_mainloop_lock(loop_);
    }
    ~PulseLock() {
        if (loop_)
            pa_threaded_mainloop_unlock(loop_);
    }
    PulseLock(const PulseLock&) = delete;
    PulseLock& operator=(const PulseLock&) = delete;

  private:
    pa_threaded_mainloop* loop_;
};

/// One delayed call on the main loop. Set, dropped and called under the loop's lock.
class PulseTimer {
  public:
    explicit PulseTimer(pa_threaded_mainloop* loop) : api_(pa_threaded_mainloop_get_api(loop)) {}
    ~PulseTimer() { cancel(); }
    PulseTimer(const PulseTimer&) = delete;
    PulseTimer& operator=(const PulseTimer&) = delete;

    /// Replaces a call that is still to come.
    void set(double seconds, std::function<void()> action);
    void cancel();

  private:
    pa_mainloop_api* api_;
    pa_time_event* event_ = nullptr;
    std::function<void()> action_;
};

struct PulseStreamUnref {
    void operator()(pa_stream* stream) const { pa_stream_unref(stream); }
};
using PulseStreamPtr = std::unique_ptr<pa_stream, PulseStreamUnref>;

/// Ends a stream without another callback. The server cannot be told to end a stream that it is
/// still creating; such a stream ends once it exists. Under the loop's lock.
void closeStream(PulseStreamPtr stream);

/// Success once a stream is ready, or why it has ended; none while it is being created. Under the
/// loop's lock.
std::optional<PulseOutcome> outcomeOf(pa_stream* stream);

struct PulseOperationCancel {
    void operator()(pa_operation* operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};
/// An operation whose callback is not called any more once this is dropped. Under the loop's lock.
using PulseOperationPtr = std::unique_ptr<pa_operation, PulseOperationCancel>;

/// Starts an operation that reports its end through a callback.
inline bool begin(pa_operation* operation) {
    if (operation)
        pa_operation_unref(operation);
    return operation != nullptr;
}

} // namespace tessarune
