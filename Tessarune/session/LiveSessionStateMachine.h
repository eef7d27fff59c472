#pragma once

#include "Tessarune/display/LiveSessionPhase.h"
#include "Tessarune/session/LiveSessionTransition.h"

#include <optional>

namespace tessarune {

/// The one authority on the phase of a session. A value; each step changes `phase` and returns what
/// the session takes over, or nothing where the step is refused.
struct LiveSessionStateMachine {
    /// Of the level meter while nothing is heard.
    static constexpr double restingAudioLevel = 0.08;

    LiveSessionPhase phase = LiveSessionPhase::idle;

    std::optional<LiveSessionTransition> beginStart();
    std::optional<LiveSessionTransition> permissionsGranted();
    std::optional<LiveSessionTransition> transcriberReady();
    std::optional<LiveSessionTransition> startFailed();
    /// A session that has ended can still be stopped while its recording is not saved.
    std::optional<LiveSessionTransition> requestStop(bool hasRecording);
    std::optional<LiveSessionTransition> stopFinished();

    bool operator==(const LiveSessionStateMachine&) const = default;
};

} // namespace tessarune
