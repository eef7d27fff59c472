#pragma once

#include "Tessarune/audio/PermissionsManager.h"

namespace tessarune::SystemAudioPermissionProber {

/// Listens to the default output for `timeout` seconds, apart from any capture that runs: granted
/// if anything arrived, denied if nothing did, unknown if no stream could be opened. Called on the
/// main queue, goes on there; the references must outlive the task.
Task<PermissionsManager::Status> run(Host& host, SoundServer& server, double timeout);

} // namespace tessarune::SystemAudioPermissionProber
