#include "Tessarune/platform/file-sound/FileSoundServer.h"

#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tessarune {

namespace {

/// The buffer length of a real server.
constexpr double bufferSeconds = 0.01;
/// How long a stream that is far enough ahead of its listener waits before the next check.
constexpr double recheckSeconds = 0.005;

constexpr const char* outputID = "file";
constexpr const char* monitorID = "file.monitor";

/// Copies `frames` frames of `block`, starting with frame `first`.
AudioBufferPtr piece(const AudioBuffer& block, std::size_t first, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(block.format.channels);
    const auto begin = block.samples.begin() + static_cast<std::ptrdiff_t>(first * channels);
    auto part = std::make_shared<AudioBuffer>();
    part->format = block.format;
    part->samples.assign(begin, begin + static_cast<std::ptrdiff_t>(frames * channels));
    return part;
}

/// Reads the file for one stream, with the number of channels that the stream requests. Used on the
/// reader's queue.
struct PlayedFile {
    std::unique_ptr<MediaFile> file;
    std::stop_source stop; ///< cancels a blocked call of `file`
    std::unique_ptr<AudioConverter> mixer;
    AudioFormat format; ///< after mixing

    AudioBufferPtr read() const {
        AudioBufferPtr block = file->read();
        return block && mixer ? std::make_shared<AudioBuffer>(mixer->convert(*block)) : block;
    }
};

} // namespace

/// The file and what is known about it. Outlives the server while work is still in progress.
class FileSoundServer::Source : public std::enable_shared_from_this<Source> {
  public:
    Source(Host& host, Media media, std::filesystem::path path)
        : media_(std::move(media)),
          path_(std::move(path)),
          reader_(Executor::queue(
              host, host.serialQueue("Tessarune.FileSoundServer", QueuePriority::userInitiated))) {}

    static Task<void> connect(std::shared_ptr<Source> self, Executor resumeOn) {
        auto opening = runOn(
            self->reader_, [&self] { self->openOnce(); }, std::move(resumeOn));
        co_await opening;
    }

    /// Returns the opened file for one stream; opens it again for each later stream. On the
    /// reader's queue.
    std::shared_ptr<PlayedFile> take(int channels) {
        openOnce();
        auto played = std::make_shared<PlayedFile>();
        played->file = std::move(opened_);
        played->format = played->file->format();
        {
            const MutexLock lock(mutex_);
            played->stop = stop_;
        }
        if (channels > 0 && channels != played->format.channels) {
            const AudioFormat wanted{played->format.sampleRate, channels};
            played->mixer = media_.makeConverter(played->format, wanted);
            played->format = wanted;
        }
        return played;
    }

    void giveUp() {
        const MutexLock lock(mutex_);
        isGivenUp_ = true;
        stop_.request_stop();
    }

    SoundOutput output() const {
        const MutexLock lock(mutex_);
        return {outputID, path_.filename().string(), monitorID, format_.value_or(AudioFormat())};
    }
    std::optional<double> duration() const {
        const MutexLock lock(mutex_);
        return duration_;
    }
    const Executor& reader() const { return reader_; }

  private:
    void openOnce() {
        if (opened_)
            return;
        std::stop_token stop;
        {
            const MutexLock lock(mutex_);
            if (isGivenUp_)
                throw MediaFileError(MediaFileError::Kind::cancelled, path_.string());
            stop_ = std::stop_source();
            stop = stop_.get_token();
        }
        opened_ = media_.open(path_, stop);
        const MutexLock lock(mutex_);
        format_ = opened_->format();
        duration_ = opened_->duration();
    }

    const Media media_;
    const std::filesystem::path path_;
    const Executor reader_;
    std::unique_ptr<MediaFile> opened_; // opened, but not read yet; reader's queue only

    mutable Mutex mutex_; // locked only for a moment
    /// Cancels blocked calls of the file that is being opened or was opened last.
    std::stop_source stop_ GUARDED_BY(mutex_);
    std::optional<AudioFormat> format_ GUARDED_BY(mutex_);
    std::optional<double> duration_ GUARDED_BY(mutex_);
    bool isGivenUp_ GUARDED_BY(mutex_) = false;
};

namespace {

struct Playing {
    std::shared_ptr<PlayedFile> file;
    Executor reader;
    FileSoundServer::Pace pace;
    RecordHandlers handlers;
    Executor executor;
    std::function<void(std::exception_ptr)> onFinished;
    double heard = 0; ///< the listener's progress at the last check; seconds
};

Task<void> keepPace(Playing& playing, double startedAt, double delivered, std::stop_token stop) {
    if (!playing.pace.heardSeconds) {
        const double ahead = startedAt + delivered - playing.executor.host().now();
        if (ahead > 0)
            co_await sleep(playing.executor, ahead, stop);
        co_return;
    }
    // The listener only advances, so its last known progress usually suffices.
    while (!stop.stop_requested() && delivered - playing.heard > playing.pace.lead) {
        playing.heard = playing.pace.heardSeconds();
        if (delivered - playing.heard > playing.pace.lead)
            co_await sleep(playing.executor, recheckSeconds, stop);
    }
}

Task<void> playAll(Playing& playing, std::stop_token stop) {
    const double startedAt = playing.executor.host().now();
    double delivered = 0;
    for (;;) {
        auto reading = runOn(
            playing.reader, [&playing] { return playing.file->read(); }, playing.executor);
        const AudioBufferPtr block = co_await reading;
        if (!block)
            co_return;
        const auto step = std::max<std::size_t>(
            1, static_cast<std::size_t>(block->format.sampleRate * bufferSeconds));
        for (std::size_t first = 0; first < block->frames(); first += step) {
            if (stop.stop_requested())
                co_return;
            const AudioBufferPtr next =
                piece(*block, first, std::min(step, block->frames() - first));
            playing.handlers.onBuffer(next);
            delivered += next->seconds();
            auto waiting = keepPace(playing, startedAt, delivered, stop);
            co_await waiting;
        }
    }
}

Task<void> play(std::shared_ptr<Playing> playing, std::stop_token stop) {
    std::exception_ptr failure;
    try {
        auto all = playAll(*playing, stop);
        co_await all;
    } catch (...) {
        failure = std::current_exception();
    }
    if (stop.stop_requested())
        co_return;
    playing->executor.host().post([playing, failure] { playing->onFinished(failure); });
}

class FileStream final : public RecordStream {
  public:
    explicit FileStream(const std::shared_ptr<Playing>& playing)
        : format_(playing->file->format),
          fileStop_(playing->file->stop),
          task_(spawn(playing->executor, play(playing, stop_.get_token()), stop_)) {}
    ~FileStream() override {
        task_.cancel();
        // The read may be waiting for a pipe.
        fileStop_.request_stop();
    }

    AudioFormat format() const override { return format_; }
    bool isContinuous() const override { return false; }

  private:
    AudioFormat format_;
    std::stop_source fileStop_;
    std::stop_source stop_;
    TaskHandle task_;
};

} // namespace

FileSoundServer::FileSoundServer(Host& host, Media media, std::filesystem::path file, Pace pace,
                                 std::function<void(std::exception_ptr)> onFinished)
    : source_(std::make_shared<Source>(host, std::move(media), std::move(file))),
      pace_(std::move(pace)),
      onFinished_(std::move(onFinished)) {}

FileSoundServer::~FileSoundServer() {
    giveUp();
}

Task<void> FileSoundServer::connect(Executor resumeOn) {
    // Opens only once: reopening a pipe would lose its beginning.
    if (source_->output().format.channels > 0)
        return runOn(
            resumeOn, [] {}, resumeOn);
    return Source::connect(source_, std::move(resumeOn));
}

void FileSoundServer::giveUp() {
    source_->giveUp();
}

std::optional<double> FileSoundServer::duration() const {
    return source_->duration();
}

SoundDevices FileSoundServer::devices() const {
    SoundDevices devices;
    devices.outputs.push_back(source_->output());
    devices.defaultOutputID = outputID;
    return devices;
}

SoundServer::Subscription FileSoundServer::observe(Executor, std::function<void()>) {
    return nullptr; // the devices never change
}

Task<std::unique_ptr<RecordStream>> FileSoundServer::openRecordStream(RecordRequest request,
                                                                      RecordHandlers handlers,
                                                                      Executor executor) {
    const std::shared_ptr<Source> source = source_;
    auto playing = std::make_shared<Playing>(
        Playing{nullptr, source->reader(), pace_, std::move(handlers), executor, onFinished_});
    if (request.sourceID != monitorID) {
        throw SoundServerError(SoundServerError::noSuchDevice,
                               localized("no such source: %@", {request.sourceID}));
    }
    auto taking = runOn(
        source->reader(), [&] { return source->take(request.channels); }, executor);
    playing->file = co_await taking;
    std::unique_ptr<RecordStream> stream = std::make_unique<FileStream>(playing);
    co_return stream;
}

Task<std::unique_ptr<PlaybackStream>> FileSoundServer::openPlaybackStream(PlaybackRequest,
                                                                          Executor executor) {
    co_await switchTo(executor);
    throw SoundServerError(SoundServerError::noSuchDevice,
                           "a sound file cannot be used for playback");
}

} // namespace tessarune
