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

/// The user's permissions for system audio, microphone and speech, as far as they are known. One
/// object for the program, on the main queue; they are kept in the user defaults.
///
/// No desktop asks for permission to record system audio: delivered sound and the probe are the
/// evidence.
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
    /// Like `latch`, but an unknown value changes nothing.
    void merge(Key key, Status system);
    /// Asks the system again. System audio keeps its value.
    void refresh();
    /// At launch: asks for speech once, if its permission is unknown.
    void bootstrap();

    SystemAuthorization::Status speechAuthorization() const { return system_.speechStatus(); }
    /// Asks for the permission, stores the answer and returns it. Resume on the main queue.
    Task<bool> requestSpeech();
    Task<bool> requestMicrophone(AudioSource source = AudioSource::microphone());
    /// Listens for `timeout` seconds whether system audio delivers anything, and stores the result.
    Task<void> deepProbeSystemAudio(double timeout);

    void openSettings(Key kind) const;

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
