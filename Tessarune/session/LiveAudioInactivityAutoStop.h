#pragma once

#include "Tessarune/session/RepeatingTimer.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <optional>

namespace tessarune {

/// Reports when nothing has been heard for too long. Main queue.
///
/// It checks every five seconds, so the report is up to five seconds late; it comes once until
/// there is activity again. Time in which the computer slept is not silence.
class LiveAudioInactivityAutoStop {
  public:
    static constexpr double secondsBetweenLooks = 5.0;
    using OnTimeout = std::function<void(double idleSeconds, double timeoutSeconds)>;

    explicit LiveAudioInactivityAutoStop(Host& host);

    /// Seconds since 1970.
    std::function<double()> now;

    /// A timeout that is absent or not positive disables the watch.
    void start(std::optional<double> timeoutSeconds, OnTimeout onTimeout);
    void stop();
    bool isRunning() const { return timer_.has_value(); }

    /// Something was heard now. No effect unless it is running.
    void noteActivity();

    /// One check; called by the timer.
    void tick();

  private:
    void passOverSleep();

    Host& host_;
    std::optional<RepeatingTimer> timer_;
    OnTimeout onTimeout_;
    std::optional<double> lastActivityAt_;
    std::optional<double> timeoutSeconds_;
    bool didFire_ = false;
    double lastLookAt_ = 0;
};

} // namespace tessarune
