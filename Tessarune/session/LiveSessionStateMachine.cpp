#include "Tessarune/session/LiveSessionStateMachine.h"

namespace tessarune {

namespace {

using Phase = LiveSessionPhase;

bool isActive(Phase phase) {
    return phase == Phase::preparing || phase == Phase::loading || phase == Phase::listening;
}

bool acceptsStart(Phase phase) {
    return phase == Phase::idle || phase == Phase::failed;
}

} // namespace

std::optional<LiveSessionTransition> LiveSessionStateMachine::beginStart() {
    if (!acceptsStart(phase))
        return std::nullopt;
    phase = Phase::preparing;
    return LiveSessionTransition{.phase = phase,
                                 .isListening = true,
                                 .isStarting = true,
                                 .status = SessionStatus{SessionStatus::Kind::checking}};
}

std::optional<LiveSessionTransition> LiveSessionStateMachine::permissionsGranted() {
    if (!isActive(phase))
        return std::nullopt;
    phase = Phase::loading;
    return LiveSessionTransition{.phase = phase,
                                 .isListening = true,
                                 .isStarting = true,
                                 .status = SessionStatus{SessionStatus::Kind::checking}};
}

std::optional<LiveSessionTransition> LiveSessionStateMachine::transcriberReady() {
    if (!isActive(phase)) {
        phase = Phase::idle;
        return LiveSessionTransition{.phase = phase, .discardLateStartArtifacts = true};
    }
    phase = Phase::listening;
    return LiveSessionTransition{.phase = phase, .isListening = true, .status = SessionStatus()};
}

std::optional<LiveSessionTransition> LiveSessionStateMachine::startFailed() {
    if (phase != Phase::preparing && phase != Phase::loading)
        return LiveSessionTransition{.phase = phase, .isListening = phase == Phase::listening};
    phase = Phase::failed;
    return LiveSessionTransition{
        .phase = phase, .audioLevel = restingAudioLevel, .presentStartFailure = true};
}

std::optional<LiveSessionTransition> LiveSessionStateMachine::requestStop(bool hasRecording) {
    if (!isActive(phase) && !(acceptsStart(phase) && hasRecording))
        return std::nullopt;
    phase = Phase::stopping;
    return LiveSessionTransition{.phase = phase,
                                 .status = SessionStatus{SessionStatus::Kind::saving},
                                 .audioLevel = restingAudioLevel};
}

std::optional<LiveSessionTransition> LiveSessionStateMachine::stopFinished() {
    phase = Phase::idle;
    return LiveSessionTransition{.phase = phase,
                                 .status = SessionStatus{SessionStatus::Kind::idle},
                                 .audioLevel = restingAudioLevel};
}

} // namespace tessarune
