#pragma once

#include "TessaruneCore/host/Host.h"

#include <functional>

namespace tessarune {

/// Handles SIGINT, SIGTERM and SIGHUP while it exists. The first signal asks the current work to
/// end; the second one ends the program at once with ExitStatus::interrupted, even if the main
/// queue is stuck in a call. Two signals within 0.3 s count as one, because one key press may reach
/// the program both directly and through its process group. Without a SignalWatch, the first signal
/// ends the program.
///
/// Only one SignalWatch may exist at a time. A thread of the process waits for the signals, so they
/// interrupt no call of the program. That thread shows the terminal's cursor again before the
/// program stops or ends.
class SignalWatch {
  public:
    /// Takes over the signals of the process, including crashes and Ctrl-Z. Call once, before any
    /// other thread is started.
    static void begin();

    /// Both functions are called on the main queue: `onSignal` once, `onContinue` whenever the
    /// program continues after a stop. Neither is called after the destruction.
    SignalWatch(Host& host, std::function<void()> onSignal, std::function<void()> onContinue = {});
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

  private:
    Block dropHandlers_; ///< makes queued calls do nothing
};

} // namespace tessarune
