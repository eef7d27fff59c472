#include "Terminal/OutputQueue.h"

#include "Terminal/TerminalCursor.h"
#include "TessaruneCore/host/Mutex.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// With more unwritten bytes than this, the reader is behind.
constexpr std::size_t behindBytes = 1 << 16;
/// A pipe that is ready accepts this much without blocking the writer.
constexpr std::size_t pieceBytes = 4096;
/// The interval of checks whether drawing is still paused.
constexpr std::chrono::milliseconds pauseStep{10};

/// Waits for room and writes some bytes from the beginning of `bytes`. Returns how many it has
/// written, or 0 with `errno` set if writing has failed.
std::size_t writeSome(int descriptor, std::string_view bytes) {
    for (;;) {
        while (TerminalCursor::isPaused())
            std::this_thread::sleep_for(pauseStep);
        pollfd room{descriptor, POLLOUT, 0};
        if (::poll(&room, 1, -1) < 0 && errno != EINTR)
            return 0;
        const ssize_t written =
            ::write(descriptor, bytes.data(), std::min(bytes.size(), pieceBytes));
        if (written > 0)
            return static_cast<std::size_t>(written);
        if (errno != EINTR && errno != EAGAIN)
            return 0;
    }
}

} // namespace

struct OutputQueue::State {
    State(int number, std::function<void()> handler)
        : descriptor(number), onChange(std::move(handler)) {}

    const int descriptor;
    mutable Mutex mutex;
    std::condition_variable_any arrived;
    std::function<void()> onChange GUARDED_BY(mutex);
    std::string waiting GUARDED_BY(mutex);
    /// The size of `waiting` plus the bytes that are being written.
    std::size_t unwritten GUARDED_BY(mutex) = 0;
    /// The queue was behind or has failed: `onChange` is called as soon as `waiting` is empty.
    bool notifiesWhenEmpty GUARDED_BY(mutex) = false;
    bool isEnding GUARDED_BY(mutex) = false;
    int failure GUARDED_BY(mutex) = 0;

    void add(std::string_view bytes) {
        const MutexLock lock(mutex);
        if (failure != 0)
            return;
        waiting += bytes;
        unwritten += bytes.size();
        notifiesWhenEmpty = notifiesWhenEmpty || unwritten > behindBytes;
        arrived.notify_one();
    }

    /// Drops everything that is queued; `add` drops what follows.
    void fail(int error) REQUIRES_LOCK(mutex) {
        failure = error;
        unwritten = 0;
        waiting.clear();
        notifiesWhenEmpty = true;
    }

    /// Keeps the lock during `onChange`, so that the queue's destructor waits for that call.
    void notifyIfEmpty() REQUIRES_LOCK(mutex) {
        if (!waiting.empty() || !notifiesWhenEmpty)
            return;
        notifiesWhenEmpty = false;
        if (onChange)
            onChange();
    }
};

OutputQueue::OutputQueue(int descriptor, std::function<void()> onChange)
    : state_(std::make_shared<State>(descriptor, std::move(onChange))) {
    cookie_io_functions_t functions{};
    functions.write = [](void* state, const char* bytes, std::size_t count) {
        static_cast<State*>(state)->add({bytes, count});
        return static_cast<ssize_t>(count);
    };
    stream_ = fopencookie(state_.get(), "w", functions);
    if (!stream_)
        throw std::bad_alloc();
    std::setvbuf(stream_, nullptr, _IOLBF, BUFSIZ);
    thread_ = std::thread([state = state_] { writeQueued(state); });
}

OutputQueue::~OutputQueue() {
    std::fclose(stream_);
    bool isIdle = false;
    {
        const MutexLock lock(state_->mutex);
        state_->isEnding = true;
        state_->onChange = {};
        isIdle = state_->unwritten == 0;
        state_->arrived.notify_one();
    }
    if (isIdle)
        thread_.join();
    else
        thread_.detach(); // a slow reader may block the thread's write for ever
}

bool OutputQueue::isBehind() const {
    const MutexLock lock(state_->mutex);
    return state_->unwritten > behindBytes;
}

bool OutputQueue::isWritten() const {
    const MutexLock lock(state_->mutex);
    return state_->unwritten == 0;
}

int OutputQueue::failure() const {
    const MutexLock lock(state_->mutex);
    return state_->failure;
}

void OutputQueue::writeQueued(const std::shared_ptr<State>& state) {
    MutexLock lock(state->mutex);
    for (;;) {
        state->notifyIfEmpty();
        while (!state->isEnding && state->waiting.empty())
            state->arrived.wait(lock);
        if (state->waiting.empty() && state->isEnding)
            return;
        const std::string bytes = std::exchange(state->waiting, {});
        for (std::string_view rest = bytes; !rest.empty() && state->failure == 0;) {
            lock.unlock();
            const std::size_t written = writeSome(state->descriptor, rest);
            const int error = errno;
            lock.lock();
            rest.remove_prefix(written);
            state->unwritten -= written;
            if (written == 0)
                state->fail(error);
        }
    }
}

} // namespace tessarune
