#pragma once

#include "TessaruneCore/host/Host.h"

namespace tessarune {

/// Where a suspended coroutine resumes: the main queue of a host, or one of its serial queues.
/// A small value that keeps the queue alive; the host must outlive it.
class Executor {
  public:
    static Executor main(Host& host) { return Executor(host, nullptr); }
    static Executor queue(Host& host, std::shared_ptr<SerialQueue> queue) {
        return Executor(host, std::move(queue));
    }

    void run(Block block) const {
        if (queue_) {
            queue_->async(std::move(block));
        } else {
            host_->post(std::move(block));
        }
    }

    Host& host() const { return *host_; }

  private:
    Executor(Host& host, std::shared_ptr<SerialQueue> queue)
        : host_(&host), queue_(std::move(queue)) {}

    Host* host_;
    std::shared_ptr<SerialQueue> queue_;
};

} // namespace tessarune
