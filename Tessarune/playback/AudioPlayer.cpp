#include "Tessarune/playback/AudioPlayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

/// Starting this close to the end plays the recording from its beginning.
constexpr double atEndSeconds = 0.05;

template <typename T>
void publish(Published<T>& published, T value) {
    if (*published != value)
        published = std::move(value);
}

} // namespace

/// Lets tasks on other queues reach the player as long as it exists.
struct AudioPlayer::WeakSelf {
    AudioPlayer* player = nullptr; ///< null after the player's destruction; main queue only
};

AudioPlayer::AudioPlayer(Host& host, PlaybackParts parts)
    : rate(1),
      host_(host),
      parts_(std::move(parts)),
      queue_(host.serialQueue("Tessarune.AudioPlayer", QueuePriority::userInitiated)),
      measuringQueue_(host.serialQueue("Tessarune.AudioPlayer.loudness", QueuePriority::utility)),
      weakSelf_(std::make_shared<WeakSelf>(WeakSelf{this})) {}

AudioPlayer::~AudioPlayer() {
    weakSelf_->player = nullptr;
    teardown();
    queue_->sync([] {}); // waits for `close`, which ends a waiting write
    queue_->sync([] {}); // waits until the engine has dropped the stream after that write
}

void AudioPlayer::teardown() {
    ++loadToken_;
    path_.clear();
    measuring_.request_stop();
    timer_.cancel();
    onEngine([](PlaybackEngine& engine) { engine.close(); });
    engine_.reset();
    needsSchedule_ = true;
    isAtEnd_ = false;
    dropBounds();
    publish(isPlaying, false);
    publish(isLoaded, false);
    publish(currentTime, 0.0);
    publish(duration, 0.0);
    publish(problem, std::string());
}

void AudioPlayer::load(const std::filesystem::path& path) {
    teardown();
    path_ = path;
    openRecording();
}

void AudioPlayer::openRecording() {
    engine_ = std::make_shared<PlaybackEngine>(parts_, Executor::queue(host_, queue_));
    queue_->async(
        [engine = engine_, weak = weakSelf_, path = path_, token = loadToken_, &host = host_] {
            try {
                const PlaybackEngine::Loaded loaded = engine->load(path);
                host.post([weak, loaded, token] {
                    if (weak->player)
                        weak->player->finishLoad(loaded, token);
                });
            } catch (const std::exception& error) {
                host.post([weak, why = std::string(error.what()), token] {
                    if (weak->player)
                        weak->player->failLoad(why, token);
                });
            }
        });
}

void AudioPlayer::finishLoad(const PlaybackEngine::Loaded& loaded, std::uint64_t token) {
    if (token != loadToken_)
        return;
    isLoudnessKnown_ = loaded.loudness.isExact;
    publish(duration, loaded.duration);
    publish(isLoaded, true);
    if (*currentTime > *duration && *duration > 0)
        publish(currentTime, *duration);
    if (*isPlaying)
        schedule();
}

void AudioPlayer::failLoad(const std::string& why, std::uint64_t token) {
    if (token != loadToken_)
        return;
    engine_.reset();
    publish(isPlaying, false);
    publish(problem, why);
}

/// Replaces the estimated gain by the exact one, which takes some seconds to measure.
void AudioPlayer::measureLoudness(const std::filesystem::path& path) {
    isLoudnessKnown_ = true;
    measuring_ = std::stop_source();
    measuringQueue_->async([path, open = parts_.open, stop = measuring_.get_token(),
                            weak = weakSelf_, token = loadToken_, &host = host_] {
        Loudness loudness;
        try {
            loudness = Loudness::measured(*open(path), stop);
        } catch (const MediaFileError&) { // keeps the estimate
        }
        if (!loudness.isExact)
            return;
        host.post([weak, token, gain = loudness.gainDB] {
            if (weak->player && weak->player->loadToken_ == token)
                weak->player->onEngine(
                    [gain](PlaybackEngine& engine) { engine.setGain(gain, false); });
        });
    });
}

void AudioPlayer::onEngine(std::function<void(PlaybackEngine&)> action) {
    if (engine_)
        queue_->async([engine = engine_, action = std::move(action)] { action(*engine); });
}

void AudioPlayer::startPlayback() {
    if (*isPlaying || path_.empty())
        return;
    if (!engine_)
        openRecording(); // the file was unreadable, but its disk may have been reconnected
    publish(problem, std::string());
    const bool isNearEnd = *duration > 0 && *currentTime >= *duration - atEndSeconds;
    if ((isAtEnd_ || isNearEnd) && !*boundedPlaybackSentenceIndex)
        seek(0);
    publish(isPlaying, true);
    if (!*isLoaded)
        return; // starts once it is loaded
    if (needsSchedule_)
        schedule();
    else
        onEngine([](PlaybackEngine& engine) { engine.resume(); });
    startTimer();
}

void AudioPlayer::pausePlayback() {
    if (!*isPlaying)
        return;
    timer_.cancel();
    onEngine([](PlaybackEngine& engine) { engine.pause(); });
    publish(isPlaying, false);
}

void AudioPlayer::togglePlayback() {
    if (*isPlaying)
        pausePlayback();
    else
        startPlayback();
}

void AudioPlayer::seek(double toTime, bool preservingBoundedPlayback) {
    if (!preservingBoundedPlayback)
        dropBounds();
    const double limit = *isLoaded && *duration > 0 ? *duration : toTime;
    publish(currentTime,
            std::clamp(std::isfinite(toTime) ? toTime : 0.0, 0.0, std::max(0.0, limit)));
    needsSchedule_ = true;
    isAtEnd_ = false;
    if (*isPlaying && *isLoaded)
        schedule();
}

void AudioPlayer::setRate(double wanted) {
    if (!std::isfinite(wanted))
        return;
    publish(rate, std::clamp(wanted, slowestRate, fastestRate));
    onEngine([speed = *rate](PlaybackEngine& engine) { engine.setRate(speed); });
}

void AudioPlayer::playBounded(std::size_t sentenceIndex, double start, double end) {
    setBounds(sentenceIndex, start, end);
    seek(start, true);
    startPlayback();
}

void AudioPlayer::repeatBounded(std::size_t sentenceIndex, double start, double end) {
    setBounds(sentenceIndex, start, end);
    publish(repeatsBoundedPlayback, true);
    applyBounds();
    startPlayback();
}

void AudioPlayer::clearBounds() {
    dropBounds();
    applyBounds();
}

void AudioPlayer::setBounds(std::size_t sentenceIndex, double start, double end) {
    publish(boundedPlaybackSentenceIndex, std::optional(sentenceIndex));
    boundedStart_ = std::max(0.0, start);
    boundedPlaybackEndTime_ = end > 0 ? std::optional(end) : std::nullopt;
}

/// Passes the limits to the engine, which keeps its position.
void AudioPlayer::applyBounds() {
    if (!needsSchedule_)
        onEngine([bounds = stretch()](PlaybackEngine& engine) { engine.setStretch(bounds); });
}

void AudioPlayer::dropBounds() {
    boundedPlaybackEndTime_.reset();
    publish(boundedPlaybackSentenceIndex, std::optional<std::size_t>());
    publish(repeatsBoundedPlayback, false);
}

PlaybackStretch AudioPlayer::stretch() const {
    if (!*boundedPlaybackSentenceIndex)
        return {*currentTime, std::nullopt, false};
    return {boundedStart_, boundedPlaybackEndTime_, *repeatsBoundedPlayback};
}

void AudioPlayer::schedule() {
    needsSchedule_ = false;
    if (!isLoudnessKnown_)
        measureLoudness(path_);
    onEngine([token = ++scheduleToken_, bounds = stretch(), from = *currentTime,
              speed = *rate](PlaybackEngine& engine) {
        engine.setRate(speed);
        engine.play(token, bounds, from);
    });
    startTimer();
}

/// Asks the engine for its progress at regular intervals, on the engine's queue.
void AudioPlayer::startTimer() {
    timer_.cancel();
    timer_ = host_.after(updateSeconds, [weak = weakSelf_] {
        AudioPlayer* player = weak->player;
        if (!player || !*player->isPlaying)
            return;
        player->startTimer();
        player->onEngine([weak, &host = player->host_](PlaybackEngine& engine) {
            host.post([weak, progress = engine.progress()] {
                if (weak->player)
                    weak->player->take(progress);
            });
        });
    });
}

void AudioPlayer::take(const PlaybackProgress& progress) {
    // Progress is outdated if it is from before a seek or of another recording.
    if (!*isPlaying || needsSchedule_ || progress.token != scheduleToken_)
        return;
    if (progress.isOver)
        finish(progress);
    else
        publish(currentTime, progress.position);
    publish(problem, progress.problem);
}

/// Called when playback has reached its limit or the end of the recording, or cannot continue.
void AudioPlayer::finish(const PlaybackProgress& progress) {
    const double reached = boundedPlaybackEndTime_
                               ? std::min(progress.position, *boundedPlaybackEndTime_)
                               : progress.position;
    isAtEnd_ = !boundedPlaybackEndTime_ && progress.problem.empty();
    pausePlayback();
    needsSchedule_ = true;
    dropBounds();
    publish(currentTime, reached);
}

} // namespace tessarune
