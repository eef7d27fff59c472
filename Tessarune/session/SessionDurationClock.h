#pragma once

#include "Tessarune/session/RepeatingTimer.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <optional>

namespace tessarune {

/// Reports the length of the session every second. Main queue.
class SessionDurationClock {
  public:
    explicit SessionDurationClock(Host& host) : host_(host) {}

    /// Restarts from 0. `onTick` gets the length in seconds.
    void start(std::function<void(double)> onTick) {
        startTime_ = host_.now();
        onTick_ = std::move(onTick);
        timer_.emplace(host_, 1.0, [this] { tick(); });
    }
    void stop() {
        timer_.reset();
        startTime_.reset();
        onTick_ = {};
    }

  private:
    void tick() {
        if (startTime_ && onTick_)
            onTick_(host_.now() - *startTime_);
    }

    Host& host_;
    std::optional<RepeatingTimer> timer_;
    std::function<void(double)> onTick_;
    std::optional<double> startTime_;
};

} // namespace tessarune
