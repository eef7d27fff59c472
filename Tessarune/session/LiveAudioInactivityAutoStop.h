#pragma once

#include "Tessarune/session/RepeatingTimer.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <optional>

namespace tessarune {

/// Reports that nothing has been heard for too long. Main queue.
///
/// It checks every five seconds, so a report is up to five seconds late. It reports each silence
/// once. Time in which the computer sleeps does not count.
class LiveAudioInactivityAutoStop {
  public:
    static constexpr double secondsBetweenChecks = 5.0;
    using OnTimeout = std::function<void(double idleSeconds, double timeoutSeconds)>;

    explicit LiveAudioInactivityAutoStop(Host& host);

    /// Seconds since 1970.
    std::function<double()> now;

    /// A timeout that is absent or not positive disables the watch.
    void start(std::optional<double> timeoutSeconds, OnTimeout onTimeout);
    void stop();

    /// Notes that something is heard now. Does nothing unless the watch is running.
    void noteActivity();

    /// One check; called by the timer.
    void tick();

  private:
    void excludeSleep();

    Host& host_;
    std::optional<RepeatingTimer> timer_;
    OnTimeout onTimeout_;
    std::optional<double> lastActivityAt_;
    std::optional<double> timeoutSeconds_;
    bool didFire_ = false;
    double lastCheckAt_ = 0;
};

} // namespace tessarune
