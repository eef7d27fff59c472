#include "Tessarune/session/SystemAudioSilentStartPolicy.h"

namespace tessarune::SystemAudioSilentStartPolicy {

bool recordSilentStart(PermissionsManager& permissions, const AudioSource& source) {
    using Status = PermissionsManager::Status;
    if (*permissions.systemAudio != Status::granted)
        permissions.latch(PermissionsManager::Key::systemAudioStatus, Status::denied);
    return !source.isMicrophone();
}

} // namespace tessarune::SystemAudioSilentStartPolicy
