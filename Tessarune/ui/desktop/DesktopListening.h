#pragma once

#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/ui/desktop/DesktopNotices.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Observations.h"
#include "TessaruneCore/observation/Published.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Starts and stops captions for the desktop program. A start waits until the previous session is
/// saved and there is sound: the sound server has answered, or the captioned file is open. A pipe
/// opens only when a program writes to it. A later command replaces a command that still waits.
///
/// While a session is being saved, a start by the user is refused, because the user sees the
/// saving. A start by a script or a command line waits instead.
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
    /// Captions the files in place of the computer's sound, one session after the other, each from
    /// its beginning to its end. The running session is saved first. Tells the user which files
    /// cannot be heard and skips them; if no file can be heard, the running session continues. A
    /// stop also drops the files that are still to come.
    void captionFiles(std::vector<std::filesystem::path> files);
    void selectSource(const AudioSource& source);
    /// What a start waits for; see CaptionWindowEnvironment. While there is a value, or the session
    /// listens, every control offers to stop, and `toggle` stops.
    const Published<std::optional<std::string>>& waiting() const { return waiting_; }
    /// Call before the program ends: a pending start no longer takes effect.
    void end() { isEnding_ = true; }

  private:
    /// The source to use once the previous session is saved.
    struct Wish {
        std::optional<std::filesystem::path> file; ///< `nullopt`: the computer
        std::optional<AudioSource> source{};       ///< `nullopt`: the source before the file
        bool isAnother = true;                     ///< whether the source changes
        bool starts = false;                       ///< whether to start a session with the source
    };

    LiveTranscriptStore& store() { return environment_.session.store(); }
    bool isListening() { return *store().view().isListening; }
    bool wantsStart() const { return wish_ && wish_->starts; }
    bool isStartQueued();
    void updateWaiting();
    std::string followingText() const;
    void dropFollowing();
    Wish nextFile();
    void startWithSound(const LiveSessionControlTrigger& trigger);
    void fileEnded(const std::string& problem);
    void want(Wish wish);
    Task<void> fulfilWish();
    Task<void> lookAt(std::vector<std::filesystem::path> files, unsigned look);
    bool isLookingAtFile() const { return look_ != 0; }
    void changeSound(const Wish& wish);
    Task<void> connectToSound();
    Task<void> tellOfWaiting();
    void listenToComputer(const AudioSource& source);

    const Environment environment_;
    std::optional<Wish> wish_;
    unsigned look_ = 0; ///< the number of the current search for a file to caption; 0: none
    unsigned lastLook_ = 0;
    std::deque<std::filesystem::path> following_;           // captioned after the current file
    std::optional<LiveSessionControlTrigger> pendingStart_; // takes effect once there is sound
    std::string waitingText_; // for the user, while `pendingStart_` has a value
    Published<std::optional<std::string>> waiting_;
    AudioSource computerSource_ = AudioSource::systemAudio(); // used again after a file
    bool hasSound_ = false;
    bool isConnecting_ = false;
    bool isEnding_ = false;
    Observations observations_;
};

} // namespace tessarune
