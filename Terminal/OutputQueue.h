#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

namespace tessarune {

/// Output to a descriptor, written on a thread of its own, so that printing never waits for a slow
/// reader: unread output is queued here.
///
/// It has no limit of its own. A caller that prints successive states checks `isBehind` first, and
/// prints only the newest state once `onChange` reports room. That bounds the queue, and drops only
/// states that a newer one replaced.
class OutputQueue {
  public:
    /// `onChange` is called on the writing thread: when all is written after `isBehind`, and when
    /// writing has failed.
    OutputQueue(int descriptor, std::function<void()> onChange);
    /// Unread output is lost.
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    /// Queues output, whole lines at a time. One thread.
    std::FILE* stream() const { return stream_; }

    // Any thread

    /// More is queued than any normal reader leaves.
    bool isBehind() const;
    bool isWritten() const;
    /// The error of the failed write; 0 if there is none. After it nothing more is written.
    int failure() const;

  private:
    struct State;
    static void write(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_; // the thread may outlive the queue, in a blocked write
    std::FILE* stream_;
    std::thread thread_;
};

} // namespace tessarune
