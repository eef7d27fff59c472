#pragma once

#include "Tessarune/playback/TranscriptPlayback.h"
#include "Tessarune/shell/Setting.h"
#include "Tessarune/shell/TessaruneFileLogger.h"

#include <optional>

namespace tessarune {

/// Logs the progress of a playback to the runtime log, to diagnose highlighting that does not match
/// the sound: periodic progress, jumps, and the order of sentences. Active only while the setting
/// is on.
///
/// Main queue. The references must outlive it.
class PlaybackTelemetry {
  public:
    // In seconds
    static constexpr double playbackProgressSummaryInterval = 10;
    /// A larger jump of the position is a seek.
    static constexpr double playbackSeekDetectionThreshold = 1.5;
    static constexpr double playbackSeekLogMinInterval = 0.5;

    PlaybackTelemetry(Host& host, TessaruneFileLogger& logger, const Setting<bool>& isEnabled,
                      TranscriptPlayback& playback);
    ~PlaybackTelemetry();
    PlaybackTelemetry(const PlaybackTelemetry&) = delete;
    PlaybackTelemetry& operator=(const PlaybackTelemetry&) = delete;

  private:
    void noteTime(double time);
    void countPlayed(bool wasPlaying);
    void summarise(double time, double now);
    void log(const char* name, LogFields fields);

    Host& host_;
    TessaruneFileLogger& logger_;
    const Setting<bool>& isEnabled_;
    TranscriptPlayback& playback_;
    Published<double>::Token timeObserver_;
    Published<bool>::Token playingObserver_;
    Published<std::optional<std::size_t>>::Token sentenceObserver_;

    double lastTime_ = 0;               ///< position in the recording
    std::optional<double> lastSummary_; ///< on the host's clock, like `lastSeek_` and `lastChange_`
    double summarisedTime_ = 0;         ///< position in the recording at the last summary
    double playedWallSeconds_ = 0;      ///< since the last summary
    double lastSeek_ = 0;
    double lastChange_ = 0;
    std::optional<std::size_t> lastSentence_;
};

} // namespace tessarune
