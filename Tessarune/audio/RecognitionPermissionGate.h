#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"

#include <exception>
#include <string>

namespace tessarune::RecognitionPermissionGate {

inline constexpr const char* errorDomain = "Tessarune";
inline constexpr int microphoneRefused = 2;
inline constexpr int speechRefused = 3;

/// Ensures that a session may listen to `source` and recognise speech; asks the user for a
/// permission that is undecided. If a permission is refused, throws LocalizedError with a text that
/// says where to grant it. Main queue.
Task<void> requestRequiredPermissions(PermissionsManager& permissions, AudioSource source,
                                      std::string recognitionOptionID);

/// Whether `failure` says that the microphone was refused. False for null.
bool isMicrophoneRefusal(const std::exception_ptr& failure);

} // namespace tessarune::RecognitionPermissionGate
