#include "Tessarune/session/SessionInactivityStop.h"

namespace tessarune {

void SessionInactivityStop::start(LiveAudioInactivityAutoStop::OnTimeout onTimeout) {
    LogFields fields{{"configuredMinutes", configuration_->minutes}};
    if (!configuration_->timeoutSeconds) {
        watch_.stop();
        log_.milestone("listen.audioInactivityAutoStop.disabled", fields);
        return;
    }
    watch_.start(configuration_->timeoutSeconds, std::move(onTimeout));
    fields.add("timeoutSeconds", *configuration_->timeoutSeconds)
        .add("activeLevelThreshold", activeLevelThreshold);
    log_.milestone("listen.audioInactivityAutoStop.started", fields);
}

void SessionInactivityStop::noteLevel(double level) {
    if (level >= activeLevelThreshold)
        watch_.noteActivity();
}

} // namespace tessarune
