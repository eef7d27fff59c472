#include "Tessarune/session/SystemAudioSilentStartPolicy.h"

#include "Tessarune/session/LiveCaptionUserMessages.h"

namespace tessarune::SystemAudioSilentStartPolicy {

std::optional<std::string> warningMessageIfNeeded(PermissionsManager& permissions,
                                                  const AudioSource& source) {
    using Status = PermissionsManager::Status;
    if (*permissions.systemAudio != Status::granted)
        permissions.latch(PermissionsManager::Key::systemAudioStatus, Status::denied);
    if (source.isMicrophone())
        return std::nullopt;
    return LiveCaptionUserMessages::silentTitle();
}

} // namespace tessarune::SystemAudioSilentStartPolicy
