#pragma once

#include "Tessarune/display/LiveSessionPhase.h"
#include "Tessarune/session/SessionStatus.h"

#include <optional>

namespace tessarune {

/// The changes that a step of the state machine asks its owner to apply.
struct LiveSessionTransition {
    LiveSessionPhase phase = LiveSessionPhase::idle; ///< after the step
    bool isListening = false;
    bool isStarting = false;
    std::optional<SessionStatus> status = std::nullopt; ///< absent if unchanged
    std::optional<double> audioLevel = std::nullopt;    ///< absent if unchanged
    /// The start was completed after its session had been abandoned: discard its results.
    bool discardLateStartArtifacts = false;
    bool presentStartFailure = false; ///< tell the user why the start failed

    bool operator==(const LiveSessionTransition&) const = default;
};

} // namespace tessarune
