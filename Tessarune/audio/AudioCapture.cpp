#include "Tessarune/audio/AudioCapture.h"

#include "TessaruneCore/host/RunOn.h"

#include <cmath>
#include <exception>
#include <utility>

namespace tessarune {

AudioCapture::AudioCapture(Host& host, SoundServer& server, AudioSource source,
                           std::string_view queueLabel)
    : host_(host),
      server_(server),
      source_(std::move(source)),
      queue_(host.serialQueue(queueLabel, QueuePriority::userInitiated)),
      executor_(Executor::queue(host, queue_)) {}

AudioCapture::~AudioCapture() {
    // The stream must stop on its queue, but the capture may be destroyed on another thread.
    if (stream_)
        queue_->async([stream = std::move(stream_)] { stream->stop(); });
}

Task<void> AudioCapture::begin() {
    return runOn(executor_, open(shared_from_this()), Executor::main(host_));
}

void AudioCapture::endLater() {
    queue_->async([self = shared_from_this()] { self->close(); });
}

Task<void> AudioCapture::end() {
    return endOnQueue(shared_from_this());
}

Task<void> AudioCapture::endOnQueue(Self self) {
    auto ending = runOn(self->executor_, [&self] { self->close(); });
    co_await ending;
}

Task<void> AudioCapture::open(Self self) {
    self->close();
    const int start = ++self->startCount_;
    Step step = Step::connecting;
    std::exception_ptr failure;
    std::shared_ptr<CaptureStream> stream;
    try {
        auto connecting = self->server_.connect(self->executor_);
        co_await connecting;
        step = Step::opening;
        if (start != self->startCount_)
            throw SoundServerError(SoundServerError::streamKilled, "stopped while starting");
        self->prepare(CaptureStream::resolveExactly(self->source_, self->server_.devices()));
        stream = self->makeStream();
        self->stream_ = stream;
        auto starting = stream->start();
        co_await starting;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure) {
        self->didOpen();
        co_return;
    }
    if (stream && self->stream_ == stream)
        self->close();
    try {
        std::rethrow_exception(failure);
    } catch (const SoundServerError& error) {
        self->fail(step, error);
    }
}

std::shared_ptr<CaptureStream> AudioCapture::makeStream() {
    const std::weak_ptr<AudioCapture> weak = weak_from_this();
    CaptureStream::Handlers handlers;
    handlers.onBuffer = [weak](AudioBufferPtr buffer) {
        if (const auto self = weak.lock())
            self->handleInput(std::move(buffer));
    };
    handlers.onEvent = [weak](const CaptureEvent& event) {
        if (const auto self = weak.lock())
            self->handleEvent(event);
    };
    return std::make_shared<CaptureStream>(server_, executor_, source_, std::move(handlers));
}

double AudioCapture::rms(const AudioBuffer& buffer) {
    if (buffer.samples.empty())
        return 0;
    double sum = 0;
    for (const float sample : buffer.samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(buffer.samples.size()));
}

void AudioCapture::close() {
    ++startCount_;
    if (auto stream = std::exchange(stream_, nullptr))
        stream->stop();
    willClose();
}

} // namespace tessarune
