#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"

#include "Tessarune/shell/AudioInactivityMinutes.h"

namespace tessarune {

LiveAudioInactivityAutoStopConfiguration::LiveAudioInactivityAutoStopConfiguration(
    std::int64_t chosenMinutes)
    : minutes(AudioInactivityMinutes::counted(chosenMinutes)) {
    if (minutes > 0)
        timeoutSeconds = static_cast<double>(minutes) * 60;
}

} // namespace tessarune
