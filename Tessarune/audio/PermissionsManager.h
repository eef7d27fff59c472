#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/audio/SystemAuthorization.h"
#include "Tessarune/shell/UserDefaults.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <memory>
#include <string_view>

namespace tessarune {

/// The user's permissions for system audio, microphone and speech, as far as they are known. Stored
/// in the user defaults. One object for the program, main queue only.
///
/// Desktops do not ask for permission to record system audio. The status of this permission depends
/// on whether sound arrives in a session or during the probe.
class PermissionsManager {
  public:
    enum class Status { granted, denied, unknown };
    enum class Key { systemAudioStatus, speechStatus, microphoneStatus };
    /// Opens the desktop's page for a permission, if it has one.
    using OpenSettings = std::function<void(Key)>;

    /// Starts with the stored values. The references must outlive the object.
    PermissionsManager(Host& host, SoundServer& server, UserDefaults& defaults,
                       SystemAuthorization system, OpenSettings openSettings = {});
    ~PermissionsManager();

    Published<Status> systemAudio;
    Published<Status> speech;
    Published<Status> microphone;

    /// Publishes and stores the value if it has changed.
    void latch(Key key, Status value);
    /// Like `latch`, but does nothing if the value is `unknown`.
    void merge(Key key, Status system);
    /// Queries the system for speech and microphone. System audio keeps its value.
    void refresh();
    /// Call at launch: asks for the permission for speech, once, if it is unknown.
    void bootstrap();

    SystemAuthorization::Status speechAuthorization() const { return system_.speechStatus(); }
    /// Both ask for the permission, store the answer and return it. They resume on the main queue.
    Task<bool> requestSpeech();
    Task<bool> requestMicrophone(AudioSource source = AudioSource::microphone());
    /// Listens to system audio for `timeout` seconds and stores whether any sound arrived, or
    /// `unknown` if no stream could be opened.
    Task<void> deepProbeSystemAudio(double timeout);

    void openSettings(Key key) const;

  private:
    Published<Status>& published(Key key);

    Host& host_;
    SoundServer& server_;
    UserDefaults& defaults_;
    SystemAuthorization system_;
    OpenSettings openSettings_;
    bool didAskForSpeech_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

/// "granted", "denied" or "unknown".
std::string_view storageName(PermissionsManager::Status status);
/// The key in the user defaults.
std::string_view storageName(PermissionsManager::Key key);

} // namespace tessarune
