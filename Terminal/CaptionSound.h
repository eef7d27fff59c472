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

/// The sound of a run comes from the desktop's sound server, from a file (played by a
/// FileSoundServer), or from sample speech (played by a DemoSound). Main queue.
class CaptionSound {
  public:
    struct Handlers {
        /// Reports a message to the user.
        std::function<void(const std::string&)> say;
        /// The file or the sample has ended; the argument is the failure, or null.
        std::function<void(std::exception_ptr)> onFinished;
        /// Returns the seconds of sound that the recogniser has processed. A file that plays fast
        /// stays at most some seconds ahead of the recogniser. Any thread.
        std::function<double()> processedSeconds;
    };

    CaptionSound(Host& host, Handlers handlers) : host_(host), handlers_(std::move(handlers)) {}

    /// Connects to the sound server. If that fails and the user has chosen no source, starts a
    /// private server with sample speech instead. Throws RunFailure.
    Task<void> open(CaptionsCommand command);
    /// Makes `open` throw if it waits for the writer of a pipe.
    void giveUp();

    SoundServer& server() const { return demo_ ? demo_->server() : *server_; }
    /// The source to listen to on `server()`.
    const AudioSource& source() const { return source_; }
    bool isFile() const { return file_.has_value(); }
    const std::optional<std::filesystem::path>& file() const { return file_; }
    /// Whether the sample speech is captioned instead of the user's sound.
    bool isDemo() const { return demo_ != nullptr; }
    /// The duration in seconds of a file that plays fast, if known.
    std::optional<double> fastDuration() const { return fastDuration_; }
    /// Describes the source to the user. Call after `open`.
    std::string description() const;

    /// Plays the sample speech, if it is used. Call when the session listens.
    void begin();

  private:
    void useFile(const FileSource& file);
    std::string fileName() const;
    Task<void> connect(bool mayShowDemo);
    Task<void> useDemo(std::string why);
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
