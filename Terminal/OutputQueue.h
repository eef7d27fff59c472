#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

namespace tessarune {

/// Output to a descriptor, written on a thread of its own. Printing never waits for a slow reader:
/// unread output is queued here.
///
/// The queue has no limit of its own. A caller that prints successive states checks `isBehind`
/// first, and prints only the newest state once `onChange` reports room. That bounds the queue, and
/// drops only states that a newer one replaced.
class OutputQueue {
  public:
    /// `onChange` is called on the writing thread: when a queue that was behind has no more to
    /// write, and when writing has failed. It must not use the queue, which is locked meanwhile.
    /// The caller must keep `descriptor` open even after the queue's destruction, because unwritten
    /// output is still written then.
    OutputQueue(int descriptor, std::function<void()> onChange);
    /// Does not wait for a slow reader: output that is unwritten when the process ends is lost.
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    /// The stream that queues output, line by line. Only one thread may use it.
    std::FILE* stream() const { return stream_; }

    // Any thread:

    /// Whether the reader is too slow, so that much output is queued.
    bool isBehind() const;
    bool isWritten() const;
    /// The error of a failed write, or 0. After a failure nothing more is written.
    int failure() const;

  private:
    struct State;
    static void writeQueued(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_; // the thread may outlive the queue, in a blocked write
    std::FILE* stream_;
    std::thread thread_;
};

} // namespace tessarune
