#include "Tessarune/playback/PlaybackTelemetry.h"

#include <cmath>
#include <utility>

namespace tessarune {

namespace {

/// The index as the log contains it: -1 if there is none.
std::int64_t loggedIndex(std::optional<std::size_t> index) {
    return index ? static_cast<std::int64_t>(*index) : -1;
}

} // namespace

PlaybackTelemetry::PlaybackTelemetry(Host& host, TessaruneFileLogger& logger,
                                     const Setting<bool>& isEnabled, TranscriptPlayback& playback)
    : host_(host), logger_(logger), isEnabled_(isEnabled), playback_(playback) {
    timeObserver_ =
        playback.player().currentTime.onDidChange([this](double time) { noteTime(time); });
    playingObserver_ = playback.player().isPlaying.onDidChange(
        [this](bool isPlaying) { countPlayed(!isPlaying); });
    sentenceObserver_ = playback.activeSentenceIndex.onDidChange([this](auto index) {
        log("sentenceChanged", {{"previousSentenceIndex", loggedIndex(lastSentence_)},
                                {"activeSentenceIndex", loggedIndex(index)}});
        lastSentence_ = index;
    });
    playback.onSentencePlayRequested = [this](const TimedSentences::Sentence& sentence) {
        log("sentencePlayRequested",
            {{"sentenceStart", sentence.start}, {"sentenceEnd", sentence.end}});
    };
}

PlaybackTelemetry::~PlaybackTelemetry() {
    playback_.onSentencePlayRequested = nullptr;
    playback_.activeSentenceIndex.remove(sentenceObserver_);
    playback_.player().isPlaying.remove(playingObserver_);
    playback_.player().currentTime.remove(timeObserver_);
}

void PlaybackTelemetry::noteTime(double time) {
    const double now = host_.now();
    const double delta = time - std::exchange(lastTime_, time);
    countPlayed(*playback_.player().isPlaying);
    if (std::abs(delta) > playbackSeekDetectionThreshold &&
        now - lastSeek_ >= playbackSeekLogMinInterval) {
        lastSeek_ = now;
        log("seekDetected",
            {{"previousTime", time - delta}, {"newTime", time}, {"timeDelta", delta}});
    }
    if (!lastSummary_) {
        lastSummary_ = now;
        summarisedTime_ = time;
    } else if (now - *lastSummary_ >= playbackProgressSummaryInterval) {
        summarise(time, now);
    }
}

void PlaybackTelemetry::countPlayed(bool wasPlaying) {
    const double previousChange = std::exchange(lastChange_, host_.now());
    if (wasPlaying)
        playedWallSeconds_ += lastChange_ - previousChange;
}

void PlaybackTelemetry::summarise(double time, double now) {
    const double duration = *playback_.player().duration;
    log("progressSummary",
        {{"audioProgressPercent", duration > 0 ? 100 * time / duration : 0.0},
         {"timeDeltaSinceLastProgress", time - std::exchange(summarisedTime_, time)},
         {"playedWallSeconds", std::exchange(playedWallSeconds_, 0)}});
    lastSummary_ = now;
}

void PlaybackTelemetry::log(const char* name, LogFields fields) {
    if (*isEnabled_)
        logger_.event(std::string("history.playback.") + name, std::move(fields));
}

} // namespace tessarune
