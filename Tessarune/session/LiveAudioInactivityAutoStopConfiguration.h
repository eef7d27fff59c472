#pragma once

#include <cstdint>
#include <optional>

namespace tessarune {

/// After how much silence a session stops by itself, as it was set when the session began.
struct LiveAudioInactivityAutoStopConfiguration {
    /// Of the values that the settings offer (0, 1, 2, 3, 4, 5, 10, 15, 20); any other becomes 1.
    explicit LiveAudioInactivityAutoStopConfiguration(std::int64_t chosenMinutes);

    std::int64_t minutes;
    std::optional<double> timeoutSeconds; ///< absent with 0 minutes: never

    bool operator==(const LiveAudioInactivityAutoStopConfiguration&) const = default;
};

} // namespace tessarune
