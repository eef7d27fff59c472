#include "Tessarune/playback/PlaybackEngine.h"

#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

/// Seconds between two attempts to open a stream that the server ended.
constexpr double retrySeconds = 0.25;

} // namespace

PlaybackEngine::PlaybackEngine(PlaybackParts parts, Executor queue)
    : parts_(std::move(parts)), queue_(std::move(queue)) {}

PlaybackEngine::Loaded PlaybackEngine::load(const std::filesystem::path& path) {
    auto reader = std::make_unique<PlaybackReader>(parts_.open(path), parts_.changeTempo);
    Loaded loaded;
    loaded.duration = reader->file().duration().value_or(0);
    loaded.loudness = Loudness::estimated(reader->file());
    reader->level().setGain(loaded.loudness.gainDB, true);
    reader_ = std::move(reader);
    return loaded;
}

void PlaybackEngine::play(std::uint64_t token, const PlaybackStretch& stretch, double position) {
    token_ = token;
    stretch_ = stretch;
    beginAt_ = position;
    isOver_ = false;
    problem_.clear();
    if (stream_)
        stream_->flush();
    resume();
}

void PlaybackEngine::pause() {
    isPaused_ = true;
    if (stream_)
        stream_->setPaused(true);
}

void PlaybackEngine::resume() {
    isPaused_ = false;
    if (stream_)
        stream_->setPaused(false);
    start();
}

void PlaybackEngine::setStretch(const PlaybackStretch& stretch) {
    stretch_ = stretch;
    isOver_ = false;
    try {
        if (reader_ && !beginAt_)
            reader_->setStretch(stretch);
    } catch (const std::exception& error) {
        problem_ = error.what();
    }
    if (!isPaused_)
        start();
}

void PlaybackEngine::setRate(double rate) {
    if (reader_)
        reader_->setRate(rate);
}

void PlaybackEngine::setGain(double gainDB, bool atOnce) {
    if (reader_)
        reader_->level().setGain(gainDB, atOnce);
}

double PlaybackEngine::position() const {
    if (beginAt_ || !reader_ || !stream_)
        return beginAt_.value_or(0);
    return reader_->positionAt(stream_->heardSeconds());
}

PlaybackProgress PlaybackEngine::progress() {
    return {token_, position(), isOver_, problem_};
}

void PlaybackEngine::close() {
    stop_.request_stop();
    if (stream_)
        stream_->flush(); // ends a blocked write
    if (!isRunning_)
        stream_.reset();
}

void PlaybackEngine::start() {
    if (!reader_ || isRunning_ || isOver_ || stop_.stop_requested())
        return;
    isRunning_ = true;
    spawn(queue_, run(shared_from_this()));
}

Task<void> PlaybackEngine::open() {
    Task<void> connecting = parts_.sound.connect(queue_);
    co_await connecting;
    if (stop_.stop_requested())
        co_return;
    PlaybackRequest request;
    request.format = reader_->format();
    request.name = localized("播放录音");
    auto opening = parts_.sound.openPlaybackStream(std::move(request), queue_);
    stream_ = co_await opening;
    wasOpen_ = true;
    problem_.clear();
    stream_->setPaused(isPaused_);
}

AudioBufferPtr PlaybackEngine::next() {
    if (const auto position = std::exchange(beginAt_, std::nullopt))
        reader_->begin(stretch_, *position);
    if (AudioBufferPtr sound = reader_->next())
        return sound;
    // The last sound is heard a little later than it is written. Until then, silence is written:
    // this reveals a stream that fails now, and makes the server play the last sound even if it is
    // very short.
    return stream_->heardSeconds() < reader_->soundSeconds() ? reader_->silence() : nullptr;
}

Task<void> PlaybackEngine::run(std::shared_ptr<PlaybackEngine> self) {
    const std::stop_token stop = self->stop_.get_token();
    while (!stop.stop_requested()) {
        bool isLost = false;
        try {
            if (!self->stream_)
                co_await self->open();
            const AudioBufferPtr sound = stop.stop_requested() ? nullptr : self->next();
            if (!sound) {
                self->isOver_ = true;
                break;
            }
            Task<void> writing = self->stream_->write(sound);
            co_await writing;
        } catch (const SoundServerError& error) {
            self->loseStream(error);
            isLost = true;
        } catch (const std::exception& error) { // the sound read so far is played to its end
            self->problem_ = error.what();
        }
        if (isLost && (self->isPaused_ || self->isOver_))
            break;
        if (isLost)
            co_await sleep(self->queue_, retrySeconds, stop);
    }
    self->isRunning_ = false;
    if (stop.stop_requested())
        self->stream_.reset();
}

void PlaybackEngine::loseStream(const SoundServerError& reason) {
    beginAt_ = position();
    stream_.reset();
    problem_ = reason.what();
    // Not retried if no stream was ever open: there is no server, or it refuses this sound.
    isOver_ = !wasOpen_;
}

} // namespace tessarune
