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

/// The outcome for one of libpulse's error numbers, with a text for the user.
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

/// One delayed call on the main loop. Set, cancelled and called under the loop's lock.
class PulseTimer {
  public:
    explicit PulseTimer(pa_threaded_mainloop* loop) : api_(pa_threaded_mainloop_get_api(loop)) {}
    ~PulseTimer() { cancel(); }
    PulseTimer(const PulseTimer&) = delete;
    PulseTimer& operator=(const PulseTimer&) = delete;

    /// Schedules `action`; replaces a pending call.
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

/// Ends a stream without another callback. A stream that the server is still creating cannot be
/// ended yet; it is ended when it is ready. Under the loop's lock.
void closeStream(PulseStreamPtr stream);

/// Success if the stream is ready, the failure if it has ended, `nullopt` while it is being
/// created. Under the loop's lock.
std::optional<PulseOutcome> outcomeOf(pa_stream* stream);

struct PulseOperationCancel {
    void operator()(pa_operation* operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};
/// An operation that is cancelled when the pointer is dropped: its callback is not called any more.
/// Under the loop's lock.
using PulseOperationPtr = std::unique_ptr<pa_operation, PulseOperationCancel>;

/// Lets a started operation run to its end, which its callback reports. Returns false if
/// `operation` is null because it could not be started.
inline bool begin(pa_operation* operation) {
    if (operation)
        pa_operation_unref(operation);
    return operation != nullptr;
}

} // namespace tessarune
