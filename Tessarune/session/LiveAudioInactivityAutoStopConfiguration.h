#pragma once

#include <cstdint>
#include <optional>

namespace tessarune {

/// The length of silence after which a session stops by itself, as set when the session began.
struct LiveAudioInactivityAutoStopConfiguration {
    /// Accepts the values of the settings (0, 1, 2, 3, 4, 5, 10, 15, 20); any other becomes 1.
    explicit LiveAudioInactivityAutoStopConfiguration(std::int64_t chosenMinutes);

    std::int64_t minutes;
    std::optional<double> timeoutSeconds; ///< absent for 0 minutes, which means never

    bool operator==(const LiveAudioInactivityAutoStopConfiguration&) const = default;
};

} // namespace tessarune
