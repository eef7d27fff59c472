#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/playback/PlaybackReader.h"

#include <cstdint>
#include <filesystem>
#include <functional>
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
    std::uint64_t token = 0; ///< of the `play` that it belongs to
    double position = 0;     ///< the heard position; seconds of the recording
    bool isOver = false;     ///< all of it has been heard, or no more can be
    std::string problem;     ///< why nothing is heard, or why it ended; empty otherwise
};

/// Plays one recording: reads it, writes it to the sound server and tracks the heard position. A
/// stream that the server ends is reopened where the sound broke off.
///
/// Confined to its executor, a serial queue; its sound is opened once. The parts outlive `close`.
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

    /// Plays `stretch` from `position` on, instead of the current playback.
    void play(std::uint64_t token, const PlaybackStretch& stretch, double position);
    void pause();
    /// Resumes after `pause`.
    void resume();
    /// See PlaybackReader.
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
    bool isRunning_ = false; ///< `run` is active, which alone opens and drops the stream
    bool wasOpen_ = false;   ///< there was a stream once, so a new one is worth waiting for
    bool isPaused_ = true;

    std::uint64_t token_ = 0;
    PlaybackStretch stretch_;
    std::optional<double> beginAt_; ///< where the stretch is still to begin
    bool isOver_ = false;
    std::string problem_;
};

} // namespace tessarune
