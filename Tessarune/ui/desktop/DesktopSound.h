#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// The sound of the desktop program: the computer's, or temporarily a file that plays in its place.
/// The computer's microphones are available in either case. The source changes only on the main
/// queue and between two sessions, so a session may use it on its own queue. The host outlives it.
class DesktopSound final : public SoundServer {
  public:
    explicit DesktopSound(Host& host) : host_(host) {}

    /// The file that is heard has been played to its end, or cannot be read further: then with a
    /// text that says why. Main queue.
    std::function<void(const std::string& problem)> onFileEnded;

    /// Why a file cannot be heard; empty: it can, or is a pipe, of which only its sound tells.
    static std::string problemOf(const std::filesystem::path& file);
    /// Switches to a file, once connected. No stream may be open.
    void playFile(const std::filesystem::path& file);
    /// Switches back to the computer. No stream may be open.
    void listenToComputer();
    bool isFile() const { return file_ != nullptr; }
    /// The name of the file; empty while the computer is the source. Set only here.
    Published<std::string> fileName;
    /// The server that plays recordings, whatever the source is.
    SoundServer& computer() { return computer_; }

    /// Returns why there is no sound, for the user; empty on success. May be called again. If the
    /// source changes meanwhile, the new one is tried.
    Task<std::string> connectOrSay();

    Task<void> connect(Executor resumeOn) override;
    SoundServerState state() const override { return heard().state(); }
    SoundDevices devices() const override;
    Subscription observe(Executor executor, std::function<void()> onChange) override;
    Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) override;
    Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                             Executor executor) override;

  private:
    SoundServer& heard() { return file_ ? static_cast<SoundServer&>(*file_) : computer_; }
    const SoundServer& heard() const {
        return file_ ? static_cast<const SoundServer&>(*file_) : computer_;
    }

    Host& host_;
    PulseSoundServer computer_;
    std::unique_ptr<FileSoundServer> file_;
    unsigned turn_ = 0; // of what is heard
};

} // namespace tessarune
