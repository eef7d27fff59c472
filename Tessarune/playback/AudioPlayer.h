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

/// Plays recordings, one at a time: at any place, at half to three times the speed without another
/// pitch, sentence by sentence. What it does is published; views observe that and call the rest.
///
/// Main queue. The host and the parts outlive it.
class AudioPlayer {
  public:
    static constexpr double slowestRate = 0.5;
    static constexpr double fastestRate = 3.0;
    /// Between two updates of `currentTime`.
    static constexpr double updateSeconds = 0.02;

    AudioPlayer(Host& host, PlaybackParts parts);
    ~AudioPlayer();
    AudioPlayer(const AudioPlayer&) = delete;
    AudioPlayer& operator=(const AudioPlayer&) = delete;

    // What a view shows. Only the player assigns.

    Published<bool> isPlaying;
    Published<double> currentTime; ///< of what is heard now; seconds of the recording
    Published<double> duration;    ///< seconds; 0 while it is unknown
    Published<bool> isLoaded;
    Published<double> rate;
    /// The sentence to which playback is limited.
    Published<std::optional<std::size_t>> boundedPlaybackSentenceIndex;
    Published<bool> repeatsBoundedPlayback;
    /// Why nothing can be heard; empty if all is well. While `isPlaying` it goes on by itself once
    /// it can.
    Published<std::string> problem;

    /// Another recording, from its beginning. `startPlayback` and `seek` may be called at once.
    void load(const std::filesystem::path& path);
    /// Nothing is loaded any more.
    void teardown();

    /// Goes on, or from the beginning if the recording was at its end. One that could not be read
    /// is tried again.
    void startPlayback();
    void pausePlayback();
    void togglePlayback();
    /// To another place, limited to the length. Ends a bounded playback unless it is preserved.
    void seek(double toTime, bool preservingBoundedPlayback = false);
    /// Limited to what is possible.
    void setRate(double rate);

    /// Plays from `start` and stops at `end`, if that is above 0.
    void playBounded(std::size_t sentenceIndex, double start, double end);
    /// Goes on from where it is and plays this stretch again and again.
    void repeatBounded(std::size_t sentenceIndex, double start, double end);
    /// What is playing is not limited any more.
    void clearBounds();

  private:
    struct Line;

    void finishLoad(const PlaybackEngine::Loaded& loaded, std::uint64_t token);
    void failLoad(const std::string& why, std::uint64_t token);
    void loadAgain();
    void measureWhole(const std::filesystem::path& path);
    void schedule();
    PlaybackStretch stretch() const;
    void setBounds(std::size_t sentenceIndex, double start, double end);
    void followBounds();
    void dropBounds();
    void startTimer();
    void take(const PlaybackProgress& progress);
    void finish(const PlaybackProgress& progress);
    void onEngine(std::function<void(PlaybackEngine&)> action);

    Host& host_;
    const PlaybackParts parts_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<SerialQueue> measuringQueue_;
    std::shared_ptr<Line> line_; ///< what returns from other queues looks here whether it is late
    std::shared_ptr<PlaybackEngine>
        engine_; ///< of the loaded recording, or of the one being loaded
    std::filesystem::path path_;

    std::uint64_t loadToken_ = 0;
    std::uint64_t scheduleToken_ = 0;
    bool needsSchedule_ = true; ///< the engine is not where `currentTime` is
    bool isAtEnd_ = false;      ///< all of it was heard, wherever its container says that it ends
    bool isLoudnessKnown_ = false; ///< of all of the file, or it is being measured
    std::stop_source measuring_;
    DelayedCall timer_;
    double boundedStart_ = 0;
    std::optional<double> boundedPlaybackEndTime_;
};

} // namespace tessarune
