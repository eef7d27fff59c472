#pragma once

#include <string_view>

namespace tessarune {

/// The phase of a listening session.
enum class LiveSessionPhase {
    idle,
    preparing, ///< a start was accepted; permissions are requested
    loading,   ///< the recogniser loads and the capture starts
    listening,
    stopping, ///< the last words are drained, and everything is saved
    failed    ///< the start failed; a new start is accepted
};

constexpr std::string_view name(LiveSessionPhase phase) {
    switch (phase) {
    case LiveSessionPhase::idle:
        return "idle";
    case LiveSessionPhase::preparing:
        return "preparing";
    case LiveSessionPhase::loading:
        return "loading";
    case LiveSessionPhase::listening:
        return "listening";
    case LiveSessionPhase::stopping:
        return "stopping";
    case LiveSessionPhase::failed:
        return "failed";
    }
    return {};
}

} // namespace tessarune
