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

    /// For a desktop without a speech permission, where only the sound server can refuse a
    /// microphone. Speech is always authorized. A request for a microphone opens a record stream
    /// for a moment. The status becomes `denied` if the server refuses the stream for lack of
    /// permission; a missing device or server is not a refusal. The status stays until the next
    /// request.
    static SystemAuthorization ofServer(Host& host, SoundServer& server);
};

} // namespace tessarune
