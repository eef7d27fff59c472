#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"

/// What a capture means that has delivered nothing since its start. Main queue.
namespace tessarune::SystemAudioSilentStartPolicy {

/// Notes that system audio does not come, unless sound has proved the permission before, and says
/// whether the user is to be warned.
bool warnsOfSilence(PermissionsManager& permissions, const AudioSource& source);

} // namespace tessarune::SystemAudioSilentStartPolicy
