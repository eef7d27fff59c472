#pragma once

#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/ui/desktop/DesktopNotices.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// Starts and stops captions for the desktop program, whatever their sound needs first: a session
/// that is still being saved, a sound server that does not answer yet, a pipe that nobody writes
/// to. Each command takes back what an earlier one still waits for.
///
/// Main thread. All references must outlive it.
class DesktopListening {
  public:
    struct Environment {
        Host& host;
        DesktopSound& sound;
        ListeningSession& session;
        DesktopNotices& notices;
        /// Whether speech can be recognised; tells the user how otherwise.
        std::function<bool()> hasSpeechModel;
    };
    explicit DesktopListening(Environment environment);
    DesktopListening(const DesktopListening&) = delete;

    /// Looks for sound, and tells the user if there is none.
    void connect();
    void start(const LiveSessionControlTrigger& trigger);
    void toggle(const LiveSessionControlTrigger& trigger);
    void stop(const LiveSessionControlTrigger& trigger);
    /// A file in place of the computer's sound, from its beginning to its end. What is heard until
    /// now is saved first.
    void captionFile(const std::filesystem::path& file);
    void selectSource(const AudioSource& source);
    /// Nothing starts from now on.
    void end() { isEnding_ = true; }

  private:
    /// What is to be heard once the session until now is saved.
    struct Wish {
        std::optional<std::filesystem::path> file; ///< without: the computer
        std::optional<AudioSource> source{};       ///< without: that before the file
        bool starts = false;
    };

    LiveTranscriptStore& store() { return environment_.session.store(); }
    bool isListening() { return *store().view().isListening; }
    void startWithSound(const LiveSessionControlTrigger& trigger);
    void fileEnded(const std::string& problem);
    void want(Wish wish);
    Task<void> fulfilWish();
    Task<void> connectToSound();
    Task<void> tellOfWaiting();
    void listenToComputer(const AudioSource& source);

    const Environment environment_;
    std::optional<Wish> wish_;
    std::optional<LiveSessionControlTrigger> pendingStart_; // once there is sound
    AudioSource computerSource_ = AudioSource::systemAudio();
    bool hasSound_ = false;
    bool isConnecting_ = false;
    bool isEnding_ = false;
};

} // namespace tessarune
