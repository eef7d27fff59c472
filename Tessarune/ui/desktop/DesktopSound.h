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
/// The computer's microphones are listed in either case. The source changes only on the main queue
/// and between two sessions, so a session may use this server on the session's own queue. The host
/// must outlive this server.
class DesktopSound final : public SoundServer {
  public:
    explicit DesktopSound(Host& host) : host_(host) {}

    /// Called when the file no longer plays. `problem` is empty if the file has ended; if the file
    /// cannot be read further, `problem` tells the user why. Main queue.
    std::function<void(const std::string& problem)> onFileEnded;

    /// The name of a file for the user, as one line without control characters.
    static std::string shownName(const std::filesystem::path& file);

    /// Returns why a file cannot be heard. Empty if it can, and for a pipe, which cannot be checked
    /// without consuming its sound. Blocks on a slow disk. Any thread.
    static std::string problemOf(const std::filesystem::path& file);
    /// Switches to a file, which the next `connect` opens. No stream may be open.
    void playFile(const std::filesystem::path& file);
    /// Switches back to the computer. No stream may be open.
    void listenToComputer();
    bool isFile() const { return file_ != nullptr; }
    /// The name of the file; empty while the computer is the source. Set only by this class.
    Published<std::string> fileName;
    /// The server that plays recordings, whatever the source is.
    SoundServer& computer() { return computer_; }

    /// Connects. Returns a text that tells the user why there is no sound; empty on success. May be
    /// called again. If the source changes meanwhile, connects to the new one.
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
    unsigned turn_ = 0; // counts the changes of the source
};

} // namespace tessarune
