#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/playback/PlaybackReader.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tessarune {

/// The dependencies of playback.
struct PlaybackParts {
    SoundServer& sound;
    OpenMediaFile open;
    MakeTempoChanger changeTempo;
};

/// The progress of a playback.
struct PlaybackProgress {
    std::uint64_t token = 0; ///< the token of the `play` call that it describes
    double position = 0;     ///< the heard position; seconds of the recording
    bool isOver = false;     ///< everything has been heard, or playback cannot continue
    std::string problem;     ///< why nothing is heard, or why it ended; empty otherwise
};

/// Plays one recording: reads it, writes it to the sound server and tracks the heard position. A
/// stream that the server ends is reopened where the sound broke off.
///
/// Confined to its executor, a serial queue; `load` is called once. If a write is waiting, `close`
/// ends it, and a later task on the queue drops the stream. The sound server must exist until then.
class PlaybackEngine : public std::enable_shared_from_this<PlaybackEngine> {
  public:
    PlaybackEngine(PlaybackParts parts, Executor queue);
    PlaybackEngine(const PlaybackEngine&) = delete;

    struct Loaded {
        double duration = 0;
        Loudness loudness;
    };
    /// Opens the recording. Throws MediaFileError.
    Loaded load(const std::filesystem::path& path);

    /// Ends the current playback and plays `stretch` from `position` on. `token` is returned by
    /// `progress`.
    void play(std::uint64_t token, const PlaybackStretch& stretch, double position);
    void pause();
    /// Resumes after `pause`.
    void resume();
    // See PlaybackReader.
    void setStretch(const PlaybackStretch& stretch);
    void setRate(double rate);
    void setGain(double gainDB, bool atOnce);
    PlaybackProgress progress();
    /// Ends playback for good.
    void close();

  private:
    static Task<void> run(std::shared_ptr<PlaybackEngine> self);
    Task<void> open();
    /// The next piece to write; null when everything has been heard.
    AudioBufferPtr next();
    void start();
    void loseStream(const SoundServerError& reason);
    double position() const;

    const PlaybackParts parts_;
    const Executor queue_;
    std::stop_source stop_;
    std::unique_ptr<PlaybackReader> reader_;
    std::unique_ptr<PlaybackStream> stream_;
    /// `run` is active; until it ends, only `run` opens and drops the stream.
    bool isRunning_ = false;
    bool wasOpen_ = false; ///< a stream was open before, so a new one is worth waiting for
    bool isPaused_ = true;

    std::uint64_t token_ = 0;
    PlaybackStretch stretch_;
    /// The position at which `run` must begin; `nullopt` once `run` has begun there.
    std::optional<double> beginAt_;
    bool isOver_ = false;
    std::string problem_;
};

} // namespace tessarune
