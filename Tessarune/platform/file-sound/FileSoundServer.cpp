#include "Tessarune/platform/file-sound/FileSoundServer.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// As long as the buffers of a real server.
constexpr double bufferSeconds = 0.01;
/// How long a stream that is far enough ahead waits before it looks again.
constexpr double lookAgainSeconds = 0.005;

constexpr const char* outputID = "file";
constexpr const char* monitorID = "file.monitor";

/// A piece of `block` from frame `first` on.
AudioBufferPtr piece(const AudioBuffer& block, std::size_t first, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(block.format.channels);
    const auto begin = block.samples.begin() + static_cast<std::ptrdiff_t>(first * channels);
    auto part = std::make_shared<AudioBuffer>();
    part->format = block.format;
    part->samples.assign(begin, begin + static_cast<std::ptrdiff_t>(frames * channels));
    return part;
}

struct Playing {
    std::unique_ptr<MediaFile> file;
    FileSoundServer::Pace pace;
    RecordHandlers handlers;
    Executor executor;
    std::function<void(std::exception_ptr)> onFinished;
};

Task<void> keepPace(const Playing& playing, double startedAt, double given, std::stop_token stop) {
    Host& host = playing.executor.host();
    if (!playing.pace.heardSeconds) {
        const double ahead = startedAt + given - host.now();
        if (ahead > 0)
            co_await sleep(playing.executor, ahead, stop);
        co_return;
    }
    while (!stop.stop_requested() && given - playing.pace.heardSeconds() > playing.pace.lead) {
        co_await sleep(playing.executor, lookAgainSeconds, stop);
    }
}

Task<void> playAll(const Playing& playing, std::stop_token stop) {
    const double startedAt = playing.executor.host().now();
    double given = 0;
    while (const AudioBufferPtr block = playing.file->read()) {
        const auto step = std::max<std::size_t>(
            1, static_cast<std::size_t>(block->format.sampleRate * bufferSeconds));
        for (std::size_t first = 0; first < block->frames(); first += step) {
            if (stop.stop_requested())
                co_return;
            const AudioBufferPtr next =
                piece(*block, first, std::min(step, block->frames() - first));
            playing.handlers.onBuffer(next);
            given += next->seconds();
            co_await keepPace(playing, startedAt, given, stop);
        }
    }
}

Task<void> play(std::shared_ptr<Playing> playing, std::stop_token stop) {
    std::exception_ptr failure;
    try {
        co_await playAll(*playing, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    if (stop.stop_requested())
        co_return;
    playing->executor.host().post([playing, failure] { playing->onFinished(failure); });
}

class FileStream final : public RecordStream {
  public:
    FileStream(AudioFormat format, std::shared_ptr<Playing> playing)
        : format_(format),
          task_(spawn(playing->executor, play(playing, stop_.get_token()), stop_)) {}
    ~FileStream() override { task_.cancel(); }

    AudioFormat format() const override { return format_; }
    bool isContinuous() const override {
        return false;
    } // it ends, and it may wait for its listener

  private:
    AudioFormat format_;
    std::stop_source stop_;
    TaskHandle task_;
};

} // namespace

FileSoundServer::FileSoundServer(OpenMediaFile open, std::filesystem::path file, Pace pace,
                                 std::function<void(std::exception_ptr)> onFinished)
    : open_(std::move(open)),
      file_(std::move(file)),
      pace_(std::move(pace)),
      onFinished_(std::move(onFinished)) {}

Task<void> FileSoundServer::connect(Executor resumeOn) {
    format_ = open_(file_)->format();
    co_await switchTo(resumeOn);
}

SoundDevices FileSoundServer::devices() const {
    SoundDevices devices;
    devices.outputs.push_back({outputID, file_.filename().string(), monitorID, format_});
    devices.defaultOutputID = outputID;
    return devices;
}

SoundServer::Subscription FileSoundServer::observe(Executor, std::function<void()>) {
    return nullptr; // nothing ever changes here
}

Task<std::unique_ptr<RecordStream>> FileSoundServer::openRecordStream(RecordRequest request,
                                                                      RecordHandlers handlers,
                                                                      Executor executor) {
    co_await switchTo(executor);
    if (request.sourceID != monitorID) {
        throw SoundServerError(SoundServerError::noSuchDevice,
                               "no such source: " + request.sourceID);
    }
    auto playing = std::make_shared<Playing>(
        Playing{open_(file_), pace_, std::move(handlers), executor, onFinished_});
    const AudioFormat format = playing->file->format();
    std::unique_ptr<RecordStream> stream = std::make_unique<FileStream>(format, std::move(playing));
    co_return stream;
}

Task<std::unique_ptr<PlaybackStream>> FileSoundServer::openPlaybackStream(PlaybackRequest,
                                                                          Executor executor) {
    co_await switchTo(executor);
    throw SoundServerError(SoundServerError::noSuchDevice, "a file plays nothing");
}

} // namespace tessarune
