#include "Tessarune/audio/SystemAudioCapture.h"

#include "Tessarune/audio/AudioLevel.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace tessarune {

using Case = SystemAudioCaptureError::Case;

std::shared_ptr<SystemAudioCapture> SystemAudioCapture::create(Host& host, SoundServer& server) {
    return std::shared_ptr<SystemAudioCapture>(new SystemAudioCapture(host, server));
}

SystemAudioCapture::SystemAudioCapture(Host& host, SoundServer& server)
    : host_(host),
      server_(server),
      ioQueue_(host.serialQueue("Tessarune.SystemAudioCapture.processTapQueue",
                                QueuePriority::userInitiated)),
      ioExecutor_(Executor::queue(host, ioQueue_)) {}

SystemAudioCapture::~SystemAudioCapture() {
    silentStartCheck_.cancel();
    // A stream ends on its own queue; the last reference may have gone away elsewhere.
    if (stream_)
        ioQueue_->async([stream = std::move(stream_)] { stream->stop(); });
}

Task<void> SystemAudioCapture::start() {
    return startOnQueue(shared_from_this());
}

void SystemAudioCapture::stop() {
    ioQueue_->async([self = shared_from_this()] { self->stopSync(); });
}

Task<void> SystemAudioCapture::finish() {
    return finishOnQueue(shared_from_this());
}

Task<void> SystemAudioCapture::finishOnQueue(std::shared_ptr<SystemAudioCapture> self) {
    auto toQueue = switchTo(self->ioExecutor_);
    auto toMain = switchTo(Executor::main(self->host_));
    co_await toQueue;
    self->stopSync();
    co_await toMain;
}

Task<void> SystemAudioCapture::startOnQueue(std::shared_ptr<SystemAudioCapture> self) {
    auto toQueue = switchTo(self->ioExecutor_);
    auto toMain = switchTo(Executor::main(self->host_));
    co_await toQueue;
    std::exception_ptr failure;
    try {
        auto opening = open(self);
        co_await opening;
    } catch (...) {
        failure = std::current_exception();
    }
    co_await toMain;
    if (failure)
        std::rethrow_exception(failure);
}

Task<void> SystemAudioCapture::open(std::shared_ptr<SystemAudioCapture> self) {
    self->stopSync();
    self->sampleCount_ = 0;
    const int start = ++self->startCount_;

    try {
        auto connecting = self->server_.connect(self->ioExecutor_);
        co_await connecting;
    } catch (const SoundServerError& error) {
        throw SystemAudioCaptureError(Case::failedToCreateTap, error.status());
    }
    const AudioSource source = AudioSource::systemAudio();
    const auto tap = CaptureStream::resolve(source, self->server_.devices());
    if (!tap)
        throw SystemAudioCaptureError(Case::failedToReadTapUID, SoundServerError::noSuchDevice);
    if (tap->format.sampleRate <= 0 || tap->format.channels <= 0)
        throw SystemAudioCaptureError(Case::unsupportedTapFormat);
    if (start != self->startCount_)
        throw SystemAudioCaptureError(Case::failedToStartDevice, SoundServerError::streamKilled);

    std::weak_ptr<SystemAudioCapture> weak = self;
    CaptureStream::Handlers handlers;
    handlers.onBuffer = [weak](AudioBufferPtr buffer) {
        if (auto capture = weak.lock())
            capture->handleInput(std::move(buffer));
    };
    handlers.onEvent = [weak](const CaptureEvent& event) {
        auto capture = weak.lock();
        auto listener = capture ? capture->delegate.lock() : nullptr;
        if (listener)
            listener->systemAudioCaptureDidChange(*capture, event);
    };
    auto stream = std::make_shared<CaptureStream>(self->server_, self->ioExecutor_, source,
                                                  std::move(handlers));
    self->stream_ = stream;
    try {
        auto starting = stream->start();
        co_await starting;
    } catch (const SoundServerError& error) {
        if (self->stream_ == stream)
            self->stream_ = nullptr;
        throw SystemAudioCaptureError(Case::failedToStartDevice, error.status());
    }
    self->scheduleSilentStartCheck();
}

void SystemAudioCapture::stopSync() {
    silentStartCheck_.cancel();
    ++startCount_;
    if (auto stream = std::exchange(stream_, nullptr))
        stream->stop();
}

void SystemAudioCapture::handleInput(AudioBufferPtr buffer) {
    if (!buffer || buffer->samples.empty())
        return;
    ++sampleCount_;
    if (sampleCount_ == 1)
        silentStartCheck_.cancel();
    auto listener = delegate.lock();
    if (!listener)
        return;
    listener->systemAudioCapture(*this, buffer);
    if (sampleCount_ == 1 || sampleCount_ % AudioLevel::buffersPerLevel == 0)
        listener->systemAudioCaptureDidMeasure(*this, audioLevel(*buffer));
}

void SystemAudioCapture::scheduleSilentStartCheck() {
    if (sampleCount_ > 0)
        return; // the first buffer was faster than the answer to the start
    std::weak_ptr<SystemAudioCapture> weak = shared_from_this();
    const int start = startCount_;
    silentStartCheck_ = host_.after(silentStartTimeoutSeconds, [weak, start] {
        auto capture = weak.lock();
        if (!capture)
            return;
        capture->ioQueue_->async([weak, start] {
            if (auto checked = weak.lock())
                checked->checkForSilentStart(start);
        });
    });
}

void SystemAudioCapture::checkForSilentStart(int start) {
    if (start != startCount_ || sampleCount_ > 0)
        return;
    host_.post([weak = weak_from_this()] {
        auto capture = weak.lock();
        auto listener = capture ? capture->delegate.lock() : nullptr;
        if (listener)
            listener->systemAudioCaptureDidStaySilent(*capture);
    });
}

double SystemAudioCapture::audioLevel(const AudioBuffer& buffer) {
    if (buffer.samples.empty())
        return 0;
    const double rms = std::max(AudioLevel::rms(buffer), 0.000001);
    return std::clamp((20 * std::log10(rms) + 60) / 60, 0.0, 1.0);
}

} // namespace tessarune
