#pragma once

#include "TessaruneCore/host/Host.h"

#include <functional>

namespace tessarune {

/// Handles SIGINT, SIGTERM and SIGHUP while it exists: the first one ends the current work in
/// order, the second one ends the program at once with ExitStatus::stoppedTwice, even if the main
/// queue is stuck in a call. Two signals within a third of a second count as one: a program and its
/// group may each get one for the same key. Without a handler, the first one ends the program.
///
/// One at a time. A thread of the process waits for the signals, so that they interrupt no call of
/// the program; it shows the terminal's cursor again before anything stops or ends.
class SignalWatch {
  public:
    /// Takes over the signals of the process, including crashes and Ctrl-Z. Call once, before any
    /// other thread is started.
    static void begin();

    /// Both are called on the main queue: `onSignal` once, `onContinue` whenever the program
    /// continues after a stop.
    SignalWatch(Host& host, std::function<void()> onSignal, std::function<void()> onContinue = {});
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;
};

} // namespace tessarune
