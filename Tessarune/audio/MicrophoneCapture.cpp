#include "Tessarune/audio/MicrophoneCapture.h"

#include "Tessarune/audio/AudioLevel.h"
#include "Tessarune/shell/DomainError.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

/// Speech at a usual distance fills only a part of the scale; a meter should show it.
constexpr double levelGain = 6.0;

DomainError notSelectable() {
    return {MicrophoneCapture::errorDomain, MicrophoneCapture::deviceNotSelectable,
            localized("无法切换到所选麦克风设备。")};
}

DomainError notAvailable() {
    return {MicrophoneCapture::errorDomain, MicrophoneCapture::deviceNotAvailable,
            localized("麦克风设备不可用。")};
}

} // namespace

std::shared_ptr<MicrophoneCapture> MicrophoneCapture::create(Host& host, SoundServer& server,
                                                             MakeAudioConverter makeConverter,
                                                             std::optional<std::string> deviceID) {
    return std::shared_ptr<MicrophoneCapture>(
        new MicrophoneCapture(host, server, std::move(makeConverter), std::move(deviceID)));
}

MicrophoneCapture::MicrophoneCapture(Host& host, SoundServer& server,
                                     MakeAudioConverter makeConverter,
                                     std::optional<std::string> deviceID)
    : host_(host),
      server_(server),
      makeConverter_(std::move(makeConverter)),
      source_(AudioSource::microphone(std::move(deviceID))),
      queue_(host.serialQueue("Tessarune.MicrophoneCapture", QueuePriority::userInitiated)),
      executor_(Executor::queue(host, queue_)) {}

MicrophoneCapture::~MicrophoneCapture() {
    if (stream_)
        queue_->async([stream = std::move(stream_)] { stream->stop(); });
}

Task<void> MicrophoneCapture::start(std::optional<double> sampleRate) {
    return startOnQueue(shared_from_this(), sampleRate);
}

Task<void> MicrophoneCapture::stop() {
    return stopOnQueue(shared_from_this());
}

Task<void> MicrophoneCapture::startOnQueue(std::shared_ptr<MicrophoneCapture> self,
                                           std::optional<double> sampleRate) {
    auto toQueue = switchTo(self->executor_);
    auto toMain = switchTo(Executor::main(self->host_));
    co_await toQueue;
    std::exception_ptr failure;
    try {
        auto opening = open(self, sampleRate);
        co_await opening;
    } catch (...) {
        failure = std::current_exception();
    }
    co_await toMain;
    if (failure)
        std::rethrow_exception(failure);
}

Task<void> MicrophoneCapture::stopOnQueue(std::shared_ptr<MicrophoneCapture> self) {
    auto toQueue = switchTo(self->executor_);
    auto toMain = switchTo(Executor::main(self->host_));
    co_await toQueue;
    self->stopSync();
    co_await toMain;
}

Task<void> MicrophoneCapture::open(std::shared_ptr<MicrophoneCapture> self,
                                   std::optional<double> sampleRate) {
    self->stopSync();
    self->levelTick_ = 0;
    const int start = ++self->startCount_;
    try {
        auto connecting = self->server_.connect(self->executor_);
        co_await connecting;
    } catch (const SoundServerError&) {
        throw notAvailable();
    }
    const auto input = CaptureStream::resolveExactly(self->source_, self->server_.devices());
    if (!input && self->source_.deviceID())
        throw notSelectable();
    if (!input || input->format.channels <= 0 || input->format.sampleRate <= 0)
        throw notAvailable();
    if (start != self->startCount_)
        throw SoundServerError(SoundServerError::streamKilled, "stopped while starting");
    if (sampleRate) {
        self->targetFormat_ = AudioFormat{*sampleRate, 1};
        try {
            self->converter_ = self->makeConverter_(input->format, *self->targetFormat_);
            self->converterInput_ = input->format;
        } catch (const std::exception&) {
            throw notAvailable();
        }
    }

    std::weak_ptr<MicrophoneCapture> weak = self;
    CaptureStream::Handlers handlers;
    handlers.onBuffer = [weak](AudioBufferPtr buffer) {
        if (auto capture = weak.lock())
            capture->process(std::move(buffer));
    };
    handlers.onEvent = [weak](const CaptureEvent& event) {
        auto capture = weak.lock();
        if (capture && capture->onEvent)
            capture->onEvent(event);
    };
    auto stream = std::make_shared<CaptureStream>(self->server_, self->executor_, self->source_,
                                                  std::move(handlers));
    self->stream_ = stream;
    std::exception_ptr failure;
    try {
        auto starting = stream->start();
        co_await starting;
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        if (self->stream_ == stream)
            self->stopSync();
        std::rethrow_exception(failure);
    }
}

void MicrophoneCapture::stopSync() {
    ++startCount_;
    if (auto stream = std::exchange(stream_, nullptr))
        stream->stop();
    converter_.reset();
    targetFormat_.reset();
}

void MicrophoneCapture::process(AudioBufferPtr buffer) {
    if (targetFormat_)
        buffer = converted(std::move(buffer));
    if (!buffer || buffer->samples.empty())
        return;
    if (onBuffer)
        onBuffer(buffer);
    ++levelTick_;
    if (levelTick_ % AudioLevel::buffersPerLevel == 0 && onLevel)
        onLevel(std::min(AudioLevel::rms(*buffer) * levelGain, 1.0));
}

AudioBufferPtr MicrophoneCapture::converted(AudioBufferPtr buffer) {
    try {
        if (!converter_ || converterInput_ != buffer->format) {
            // Another device took over, with a format of its own.
            converter_ = makeConverter_(buffer->format, *targetFormat_);
            converterInput_ = buffer->format;
        }
        return std::make_shared<AudioBuffer>(converter_->convert(*buffer));
    } catch (const std::exception& error) {
        converter_.reset();
        const std::string text = error.what();
        TessaruneLog::capture.fault([&] { return "microphone sound not converted: " + text; });
        return nullptr;
    }
}

} // namespace tessarune
