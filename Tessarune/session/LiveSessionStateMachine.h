#pragma once

#include "Tessarune/display/LiveSessionPhase.h"
#include "Tessarune/session/LiveSessionTransition.h"

#include <optional>

namespace tessarune {

/// The single authority on the phase of a session. Each step returns the changes for the session,
/// or `nullopt` if the step is refused.
struct LiveSessionStateMachine {
    /// The level meter's value in silence.
    static constexpr double restingAudioLevel = 0.08;

    LiveSessionPhase phase = LiveSessionPhase::idle;

    std::optional<LiveSessionTransition> beginStart();
    std::optional<LiveSessionTransition> permissionsGranted();
    std::optional<LiveSessionTransition> transcriberReady();
    /// Keeps the phase if the start was stopped before it failed.
    std::optional<LiveSessionTransition> startFailed();
    /// In `idle` and `failed`, accepted only while a recording is still to be saved.
    std::optional<LiveSessionTransition> requestStop(bool hasRecording);
    std::optional<LiveSessionTransition> stopFinished();

    bool operator==(const LiveSessionStateMachine&) const = default;
};

} // namespace tessarune
