#pragma once

#include "Tessarune/session/LiveAudioInactivityAutoStop.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/session/SessionLog.h"

#include <cstdint>
#include <optional>

namespace tessarune {

/// Reports that a session has been silent for too long. The minutes are fixed when the session
/// begins; a later change of the setting applies to the next session. Main queue. Host and log must
/// outlive it.
class SessionInactivityStop {
  public:
    /// Sound at least this loud counts as activity.
    static constexpr double activeLevelThreshold = 0.01;

    SessionInactivityStop(Host& host, SessionLog& log) : log_(log), watch_(host) {}

    void configure(std::int64_t minutes) { configuration_.emplace(minutes); }
    void reset() { configuration_.reset(); }
    const std::optional<LiveAudioInactivityAutoStopConfiguration>& configuration() const {
        return configuration_;
    }

    /// Starts the watch, unless the configured minutes are 0. Call after `configure`. `onTimeout`
    /// is passed to LiveAudioInactivityAutoStop.
    void start(LiveAudioInactivityAutoStop::OnTimeout onTimeout);
    void stop() { watch_.stop(); }
    void noteActivity() { watch_.noteActivity(); }
    void noteLevel(double level);

  private:
    SessionLog& log_;
    LiveAudioInactivityAutoStop watch_;
    std::optional<LiveAudioInactivityAutoStopConfiguration> configuration_;
};

} // namespace tessarune
