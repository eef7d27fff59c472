#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"

/// Handles a capture that has delivered nothing since its start. Main queue.
namespace tessarune::SystemAudioSilentStartPolicy {

/// Records that the permission for system audio is denied, unless it is known to be granted.
/// Returns whether to warn the user.
bool recordSilentStart(PermissionsManager& permissions, const AudioSource& source);

} // namespace tessarune::SystemAudioSilentStartPolicy
