#pragma once

#include "TessaruneCore/host/Host.h"

#include <functional>
#include <thread>

namespace tessarune {

/// Turns SIGINT, SIGTERM and SIGHUP into calls on the main queue.
///
/// `blockSignals` must have been called before any other thread was started: the signals are then
/// blocked in all of them, and the watch's own thread waits for them.
class SignalWatch {
  public:
    static void blockSignals();

    SignalWatch(Host& host, std::function<void()> onSignal);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

  private:
    std::thread thread_;
};

} // namespace tessarune
