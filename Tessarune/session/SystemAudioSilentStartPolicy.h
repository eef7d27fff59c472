#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"

#include <optional>
#include <string>

/// What a capture means that has delivered nothing since its start. Main queue.
namespace tessarune::SystemAudioSilentStartPolicy {

/// Notes that system audio does not come, unless sound has proved the permission before, and gives
/// the warning to show.
std::optional<std::string> warningMessageIfNeeded(PermissionsManager& permissions,
                                                  const AudioSource& source);

} // namespace tessarune::SystemAudioSilentStartPolicy
