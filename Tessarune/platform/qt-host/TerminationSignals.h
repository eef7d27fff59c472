#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace tessarune {

/// SIGINT, SIGTERM and SIGHUP as calls on the main thread, while it exists. Made before the program
/// starts any thread, which would get the signals instead.
class TerminationSignals {
  public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;

    /// From now on `onSignal` is called for each. Needs the application object.
    void watch(std::function<void()> onSignal);

  private:
    const int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace tessarune
