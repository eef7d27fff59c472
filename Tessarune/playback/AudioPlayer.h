#pragma once

#include "Tessarune/playback/PlaybackEngine.h"
#include "TessaruneCore/observation/Published.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Plays recordings, one at a time: from any position or sentence by sentence, at half to three
/// times the speed with unchanged pitch. Its state is published; views observe it and call the
/// operations.
///
/// Main queue. The host and the sound server must outlive it.
class AudioPlayer {
  public:
    static constexpr double slowestRate = 0.5;
    static constexpr double fastestRate = 3.0;
    /// Seconds between two updates of `currentTime`.
    static constexpr double updateSeconds = 0.02;

    AudioPlayer(Host& host, PlaybackParts parts);
    ~AudioPlayer();
    AudioPlayer(const AudioPlayer&) = delete;
    AudioPlayer& operator=(const AudioPlayer&) = delete;

    // The state for views. Only the player assigns it.

    Published<bool> isPlaying;
    Published<double> currentTime; ///< the heard position; seconds of the recording
    Published<double> duration;    ///< seconds; 0 if unknown
    Published<bool> isLoaded;
    Published<double> rate;
    /// The sentence, or the first of several, to which playback is limited; `nullopt` if there is
    /// no limit.
    Published<std::optional<std::size_t>> boundedPlaybackSentenceIndex;
    Published<bool> repeatsBoundedPlayback;
    /// Why nothing is heard, or why playback will end before the end of the recording; empty if all
    /// is well. If the sound server was lost but `isPlaying` is still true, playback continues by
    /// itself when the server is back.
    Published<std::string> problem;

    /// Loads another recording and moves to its beginning. `startPlayback` and `seek` may be called
    /// before it is loaded.
    void load(const std::filesystem::path& path);
    /// Unloads the recording.
    void teardown();

    /// Resumes, or starts from the beginning if the recording was at its end. Tries again to load a
    /// recording that was unreadable.
    void startPlayback();
    void pausePlayback();
    void togglePlayback();
    /// Moves to a position in seconds, clamped to the recording. Removes the limit of the current
    /// playback, unless `preservingBoundedPlayback`.
    void seek(double toTime, bool preservingBoundedPlayback = false);
    /// Clamped to the supported range.
    void setRate(double rate);

    /// Plays from `start` and stops at `end`, which may be the end of a later sentence; an `end` of
    /// 0 means the end of the recording.
    void playBounded(std::size_t sentenceIndex, double start, double end);
    /// Continues from the current position and repeats the stretch from `start` to `end`;
    /// an `end` of 0 means the end of the recording.
    void repeatBounded(std::size_t sentenceIndex, double start, double end);
    /// Removes the limit of the current playback.
    void clearBounds();

  private:
    struct WeakSelf;

    void finishLoad(const PlaybackEngine::Loaded& loaded, std::uint64_t token);
    void failLoad(const std::string& why, std::uint64_t token);
    void openRecording();
    void measureLoudness(const std::filesystem::path& path);
    void schedule();
    PlaybackStretch stretch() const;
    void setBounds(std::size_t sentenceIndex, double start, double end);
    void applyBounds();
    void dropBounds();
    void startTimer();
    void take(const PlaybackProgress& progress);
    void finish(const PlaybackProgress& progress);
    void onEngine(std::function<void(PlaybackEngine&)> action);

    Host& host_;
    const PlaybackParts parts_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<SerialQueue> measuringQueue_;
    std::shared_ptr<WeakSelf> weakSelf_; ///< for late results from other queues
    /// Plays the recording that is loaded or being loaded; null if there is none, or if loading
    /// failed.
    std::shared_ptr<PlaybackEngine> engine_;
    std::filesystem::path path_; ///< empty if no recording was chosen

    std::uint64_t loadToken_ = 0;
    std::uint64_t scheduleToken_ = 0;
    bool needsSchedule_ = true; ///< the engine is not at `currentTime`
    /// The recording was played to its end, whatever duration its container states.
    bool isAtEnd_ = false;
    bool isLoudnessKnown_ = false; ///< the loudness is exact, or its measurement has begun
    std::stop_source measuring_;
    DelayedCall timer_;
    double boundedStart_ = 0;
    std::optional<double> boundedPlaybackEndTime_;
};

} // namespace tessarune
