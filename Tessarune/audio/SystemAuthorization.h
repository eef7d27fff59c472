#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>

namespace tessarune {

/// What the desktop itself answers about permissions, as functions so that another desktop (or a
/// test) can answer otherwise. All are called on the main queue and go on there.
struct SystemAuthorization {
    enum class Status { notDetermined, restricted, denied, authorized };

    std::function<Status()> speechStatus;
    std::function<Task<bool>()> requestSpeech;
    std::function<Status()> microphoneStatus;
    /// For this microphone.
    std::function<Task<bool>(AudioSource)> requestMicrophone;

    /// A desktop that has no permission for speech, and for microphones only what the sound server
    /// says: asking opens a short record stream on the microphone in question, and access is denied
    /// if the server refuses that for want of access. A missing device or server is no refusal, and
    /// a refusal lasts until the next time somebody asks.
    static SystemAuthorization ofServer(Host& host, SoundServer& server);
};

} // namespace tessarune
