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

/// What the user may do with sound and speech here, as far as it is known. One object for the
/// program, on the main queue; what was learned is kept in the user defaults.
///
/// For system audio no desktop offers a question: sound that was delivered and the probe are the
/// evidence.
class PermissionsManager {
  public:
    enum class Status { granted, denied, unknown };
    enum class Key { systemAudioStatus, speechStatus, microphoneStatus };
    /// Opens the desktop's page for a permission, if it has one.
    using OpenSettings = std::function<void(Key)>;

    /// Starts with what the defaults hold. The references must outlive the object.
    PermissionsManager(Host& host, SoundServer& server, UserDefaults& defaults,
                       SystemAuthorization system, OpenSettings openSettings = {});
    ~PermissionsManager();

    Published<Status> systemAudio;
    Published<Status> speech;
    Published<Status> microphone;

    /// Publishes and stores the value, if it is another one.
    void latch(Key key, Status value);
    /// As `latch`, but a system that does not know changes nothing.
    void merge(Key key, Status system);
    /// Asks the system again. System audio stays as it is.
    void refresh();
    /// At launch: asks for speech once, if nothing is known about it.
    void bootstrap();

    SystemAuthorization::Status speechAuthorization() const { return system_.speechStatus(); }
    /// Asks for the permission, latches the answer and gives it. Go on on the main queue.
    Task<bool> requestSpeech();
    Task<bool> requestMicrophone(AudioSource source = AudioSource::microphone());
    /// Listens for `timeout` seconds whether system audio delivers anything, and latches that.
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
