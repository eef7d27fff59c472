#pragma once

#include "TessaruneCore/host/Host.h"

#include <functional>

namespace tessarune {

/// What SIGINT, SIGTERM and SIGHUP do while it exists: the first ends in order whatever is running,
/// the second ends the program at once with ExitStatus::stoppedTwice, even where the main queue is
/// inside a call that does not return. Two within a third of a second are one: a program and its
/// group may each get one for the same key. Where nobody watches, the first ends the program.
///
/// One at a time. A thread of the process waits for the signals, so that no call of the program is
/// interrupted by them; it shows the terminal's cursor again before anything stops or ends.
class SignalWatch {
  public:
    /// Takes the signals of the process over, crashes and Ctrl-Z included. To be called once,
    /// before any other thread was started.
    static void begin();

    /// Both are called on the main queue: `onSignal` once, `onContinue` whenever the program goes
    /// on after it was stopped.
    SignalWatch(Host& host, std::function<void()> onSignal, std::function<void()> onContinue = {});
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;
};

} // namespace tessarune
