#pragma once

#include "Terminal/TerminalOptions.h"
#include "Tessarune/app/DemoSound.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Task.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The sound of a run: the desktop's server, a file that plays like one, or the private server with
/// sample speech. Main queue.
class CaptionSound {
  public:
    struct Handlers {
        /// Reports a message to the user.
        std::function<void(const std::string&)> say;
        /// The file or the sample has ended; with the failure if it broke off.
        std::function<void(std::exception_ptr)> onFinished;
        /// Seconds of sound that the recogniser has taken, for a file that plays fast. Any thread.
        std::function<double()> takenSeconds;
    };

    CaptionSound(Host& host, Handlers handlers) : host_(host), handlers_(std::move(handlers)) {}

    /// Connects. Throws RunFailure.
    Task<void> open(CaptionsCommand command);
    /// The user no longer wants to wait: a pending `open` throws, as for a pipe without a writer.
    void giveUp();

    SoundServer& server() { return demo_ ? demo_->server() : *server_; }
    /// What to listen to on that server.
    const AudioSource& source() const { return source_; }
    bool isFile() const { return file_.has_value(); }
    const std::optional<std::filesystem::path>& file() const { return file_; }
    /// Only the program's own sample is heard, nothing of the user's.
    bool isDemo() const { return demo_ != nullptr; }
    /// The length in seconds of a file that plays as fast as it can, if known.
    std::optional<double> fastDuration() const { return fastDuration_; }
    /// A description for the user, once it is open.
    std::string description() const;

    /// Call when the session listens: the sample begins to play.
    void begin();

  private:
    void useFile(const FileSource& file);
    std::string fileName() const;
    Task<void> connect(bool mayShowDemo);
    void useDemo(const std::string& why);
    AudioSource microphone(const AudioSource& wanted);
    Task<void> playDemo();

    Host& host_;
    Handlers handlers_;
    AudioSource source_ = AudioSource::systemAudio();
    std::optional<std::filesystem::path> file_;
    bool isFast_ = false;
    std::optional<double> fastDuration_;
    std::unique_ptr<SoundServer> server_;
    std::function<void()> giveUp_;
    std::unique_ptr<DemoSound> demo_;
};

} // namespace tessarune
