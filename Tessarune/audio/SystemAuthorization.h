#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>

namespace tessarune {

/// The desktop's answers about permissions, as functions that another desktop or a test can
/// replace. All are called on the main queue and resume there.
struct SystemAuthorization {
    enum class Status { notDetermined, restricted, denied, authorized };

    std::function<Status()> speechStatus;
    std::function<Task<bool>()> requestSpeech;
    std::function<Status()> microphoneStatus;
    /// Asks for the permission to use this microphone.
    std::function<Task<bool>(AudioSource)> requestMicrophone;

    /// For a desktop that has no permission for speech and whose sound server controls microphones:
    /// the request opens a short record stream on the microphone, and access is denied if the
    /// server refuses it for lack of permission. A missing device or server is not a refusal. A
    /// refusal is valid until the next request.
    static SystemAuthorization ofServer(Host& host, SoundServer& server);
};

} // namespace tessarune
