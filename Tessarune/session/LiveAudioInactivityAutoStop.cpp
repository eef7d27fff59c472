#include "Tessarune/session/LiveAudioInactivityAutoStop.h"

#include <algorithm>
#include <utility>

namespace tessarune {

LiveAudioInactivityAutoStop::LiveAudioInactivityAutoStop(Host& host)
    : now([&host] { return host.now(); }), host_(host) {}

void LiveAudioInactivityAutoStop::start(std::optional<double> timeoutSeconds, OnTimeout onTimeout) {
    stop();
    if (!timeoutSeconds || *timeoutSeconds <= 0)
        return;
    didFire_ = false;
    lastActivityAt_ = now();
    lastCheckAt_ = host_.now();
    timeoutSeconds_ = timeoutSeconds;
    onTimeout_ = std::move(onTimeout);
    timer_.emplace(host_, secondsBetweenChecks, [this] { tick(); });
}

void LiveAudioInactivityAutoStop::stop() {
    timer_.reset();
    onTimeout_ = {};
    lastActivityAt_.reset();
    timeoutSeconds_.reset();
    didFire_ = false;
}

void LiveAudioInactivityAutoStop::noteActivity() {
    if (!timer_)
        return;
    lastActivityAt_ = now();
    didFire_ = false;
}

void LiveAudioInactivityAutoStop::tick() {
    excludeSleep();
    if (didFire_ || !timer_ || !timeoutSeconds_)
        return;
    const double idle = lastActivityAt_ ? std::max(now() - *lastActivityAt_, 0.0) : 0.0;
    if (idle < *timeoutSeconds_)
        return;
    didFire_ = true;
    // The callback may stop this watch, which clears `onTimeout_`.
    const OnTimeout onTimeout = onTimeout_;
    const double timeout = *timeoutSeconds_;
    if (onTimeout)
        onTimeout(idle, timeout);
}

void LiveAudioInactivityAutoStop::excludeSleep() {
    const double late = host_.now() - lastCheckAt_ - secondsBetweenChecks;
    lastCheckAt_ = host_.now();
    // A check that is late by more than an interval means sleep. A busy computer is assumed to
    // delay a check by less than that.
    if (late > secondsBetweenChecks && lastActivityAt_)
        *lastActivityAt_ += late;
}

} // namespace tessarune
