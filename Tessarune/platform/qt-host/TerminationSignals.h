#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace tessarune {

/// Turns SIGINT, SIGTERM and SIGHUP into calls on the main thread. Must be created before the
/// program starts another thread, which would receive the signals instead. The signals stay
/// blocked. Also ignores SIGPIPE and SIGXFSZ, so that a write fails instead of ending the program.
class TerminationSignals {
  public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;

    /// Calls `onSignal` for each signal from now on. Needs the application object.
    void watch(std::function<void()> onSignal);

  private:
    const int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace tessarune
