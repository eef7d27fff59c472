#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

namespace tessarune {

/// Bytes on their way to a descriptor. A thread of its own writes them, so that nobody who prints
/// waits for a reader: what a slow one has not taken waits here.
///
/// It has no limit of its own. A caller that prints successive states checks `isBehind` first, and
/// prints only the newest state once `onChange` reports room. That bounds what is queued, and drops
/// only states that a newer one replaced.
class OutputQueue {
  public:
    /// `onChange` is called on the writing thread: when all is written after `isBehind`, and when
    /// writing has failed.
    OutputQueue(int descriptor, std::function<void()> onChange);
    /// What nobody has read by then is lost.
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    /// Prints into the queue, whole lines at a time. One thread.
    std::FILE* stream() const { return stream_; }

    // Any thread

    /// More waits than a reader of everyday speed ever leaves.
    bool isBehind() const;
    bool isWritten() const;
    /// The error of the write that failed; 0 while none has. After it nothing is written any more.
    int failure() const;

  private:
    struct State;
    static void write(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_; // the thread may outlive the queue, inside a write
    std::FILE* stream_;
    std::thread thread_;
};

} // namespace tessarune
