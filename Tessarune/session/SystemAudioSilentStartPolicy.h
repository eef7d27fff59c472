#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"

/// Handles a capture that has delivered nothing since its start. Main queue.
namespace tessarune::SystemAudioSilentStartPolicy {

/// Records that system audio does not arrive, unless earlier sound has proved the permission;
/// returns whether to warn the user.
bool warnsOfSilence(PermissionsManager& permissions, const AudioSource& source);

} // namespace tessarune::SystemAudioSilentStartPolicy
