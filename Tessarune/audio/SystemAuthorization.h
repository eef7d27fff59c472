#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>

namespace tessarune {

/// The desktop's own answers about permissions, as functions so that another desktop (or a test)
/// can replace them. All are called on the main queue and resume there.
struct SystemAuthorization {
    enum class Status { notDetermined, restricted, denied, authorized };

    std::function<Status()> speechStatus;
    std::function<Task<bool>()> requestSpeech;
    std::function<Status()> microphoneStatus;
    /// For this microphone.
    std::function<Task<bool>(AudioSource)> requestMicrophone;

    /// A desktop without a permission for speech, and with microphones controlled by the sound
    /// server: asking opens a short record stream on the microphone, and access is denied if the
    /// server refuses it for lack of permission. A missing device or server is not a refusal, and a
    /// refusal lasts until the next request.
    static SystemAuthorization ofServer(Host& host, SoundServer& server);
};

} // namespace tessarune
