#pragma once

#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/ui/desktop/DesktopNotices.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Published.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// Starts and stops captions for the desktop program. A start waits until the previous session is
/// saved, the sound server answers, or a pipe has a writer. A later command replaces one that is
/// still waiting.
///
/// While a session is being saved, a user who sees that cannot start another one. Who does not, as
/// a script or a second launch, is heard: then the start waits.
///
/// Main thread. All references must outlive it.
class DesktopListening {
  public:
    struct Environment {
        Host& host;
        DesktopSound& sound;
        ListeningSession& session;
        DesktopNotices& notices;
        /// Whether speech can be recognised; if not, tells the user why.
        std::function<bool()> hasSpeechModel;
    };
    explicit DesktopListening(Environment environment);
    DesktopListening(const DesktopListening&) = delete;

    /// Connects to the source of sound, and tells the user if that fails.
    void connect();
    void start(const LiveSessionControlTrigger& trigger);
    void toggle(const LiveSessionControlTrigger& trigger);
    void stop(const LiveSessionControlTrigger& trigger);
    /// Captions a file in place of the computer's sound, from its beginning to its end. The running
    /// session is saved first. If the file cannot be heard, tells the user, and the session
    /// continues.
    void captionFile(const std::filesystem::path& file);
    void selectSource(const AudioSource& source);
    /// What a start waits for; see CaptionWindowEnvironment.
    const Published<std::optional<std::string>>& waiting() const { return waiting_; }
    /// Call before the program ends: a pending start no longer takes effect.
    void end() { isEnding_ = true; }

  private:
    /// The source to use once the previous session is saved.
    struct Wish {
        std::optional<std::filesystem::path> file; ///< `nullopt`: the computer
        std::optional<AudioSource> source{};       ///< `nullopt`: the source before the file
        bool isAnother = true;                     ///< false: the same source as before
        bool starts = false;
    };

    LiveTranscriptStore& store() { return environment_.session.store(); }
    bool isListening() { return *store().view().isListening; }
    bool wantsStart() const { return wish_ && wish_->starts; }
    std::optional<LiveSessionControlTrigger> takePendingStart();
    void startWithSound(const LiveSessionControlTrigger& trigger);
    void fileEnded(const std::string& problem);
    void want(Wish wish);
    Task<void> fulfilWish();
    Task<void> lookAt(std::filesystem::path file, unsigned look);
    bool isLookingAtFile() const { return look_ != 0; }
    void changeSound(const Wish& wish);
    Task<void> connectToSound();
    Task<void> tellOfWaiting();
    void listenToComputer(const AudioSource& source);

    const Environment environment_;
    std::optional<Wish> wish_;
    unsigned look_ = 0; ///< at the file to caption; 0: none
    unsigned lastLook_ = 0;
    std::optional<LiveSessionControlTrigger> pendingStart_; // takes effect once there is sound
    Published<std::optional<std::string>> waiting_;         // while a start is pending
    AudioSource computerSource_ = AudioSource::systemAudio();
    bool hasSound_ = false;
    bool isConnecting_ = false;
    bool isEnding_ = false;
};

} // namespace tessarune
