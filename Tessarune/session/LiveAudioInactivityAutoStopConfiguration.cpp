#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"

#include <algorithm>
#include <array>

namespace tessarune {

LiveAudioInactivityAutoStopConfiguration::LiveAudioInactivityAutoStopConfiguration(
    std::int64_t chosenMinutes) {
    constexpr std::array<std::int64_t, 9> allowed{0, 1, 2, 3, 4, 5, 10, 15, 20};
    minutes = std::find(allowed.begin(), allowed.end(), chosenMinutes) != allowed.end()
                  ? chosenMinutes
                  : 1;
    if (minutes > 0)
        timeoutSeconds = static_cast<double>(minutes) * 60;
}

} // namespace tessarune
