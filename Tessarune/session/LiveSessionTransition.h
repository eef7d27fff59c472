#pragma once

#include "Tessarune/display/LiveSessionPhase.h"
#include "Tessarune/session/SessionStatus.h"

#include <optional>

namespace tessarune {

/// What a step of the session's state machine asks its owner to take over.
struct LiveSessionTransition {
    LiveSessionPhase phase = LiveSessionPhase::idle; ///< after the step
    bool isListening = false;
    bool isStarting = false;
    std::optional<SessionStatus> status = std::nullopt; ///< absent: stays as it is
    std::optional<double> audioLevel = std::nullopt;    ///< absent: stays as it is
    /// The start ended after the session had been given up: what it made is thrown away.
    bool discardLateStartArtifacts = false;
    bool presentStartFailure = false; ///< the user is to be told why the start failed

    bool operator==(const LiveSessionTransition&) const = default;
};

} // namespace tessarune
