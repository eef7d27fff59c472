#include "Tessarune/session/LiveSystemAudioTranscriber.h"

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/CancellationError.h"

#include <exception>
#include <utility>

namespace tessarune {

std::shared_ptr<LiveSystemAudioTranscriber>
LiveSystemAudioTranscriber::make(Environment environment) {
    Self self(new LiveSystemAudioTranscriber(std::move(environment)));
    self->connect();
    return self;
}

LiveSystemAudioTranscriber::LiveSystemAudioTranscriber(Environment environment)
    : environment_(std::move(environment)),
      capture_(SystemAudioCapture::create(environment_.speech.host, environment_.sound)) {}

void LiveSystemAudioTranscriber::connect() {
    const std::weak_ptr<LiveSystemAudioTranscriber> weak = weak_from_this();
    capture_->delegate = weak;
    AudioSessionRecorder& recorder = *environment_.recorder;
    recorder.onStarted = [weak](const RecordingMetadata& metadata) {
        const auto self = weak.lock();
        if (self && self->onRecordingStarted)
            self->onRecordingStarted(metadata);
    };
    recorder.onFirstSample = [weak](const AudioSessionRecorder::FirstSample& sample) {
        const auto self = weak.lock();
        if (self && self->onFirstSample)
            self->onFirstSample(sample);
    };
    recorder.onFinished = [weak](const RecordingMetadata& metadata) {
        const auto self = weak.lock();
        if (self && self->onRecordingFinished)
            self->onRecordingFinished(metadata);
    };
    recorder.onError = [weak](const std::string& text) {
        const auto self = weak.lock();
        if (self && self->onError)
            self->onError(text);
    };
}

Task<void> LiveSystemAudioTranscriber::start(AudioSource source) {
    return startSession(shared_from_this(), std::move(source));
}

Task<void> LiveSystemAudioTranscriber::startSession(Self self, AudioSource source) {
    const AppSettings& settings = self->environment_.settings;
    self->logger().important(
        "transcriber.start.request",
        {{"source", source.logName()},
         {"recordWhileCaptioning", *settings.recordWhileCaptioning},
         {"recordLosslessAudio", *settings.recordLosslessAudio},
         {"sessionDiagnosticsEnabled", *settings.sessionDiagnosticsEnabled},
         {"appleDiagnosticsMode", std::string(name(self->diagnosticsMode()))}});
    self->abandon(); // ends what an earlier session left running
    {
        const MutexLock lock(self->perfLock_);
        self->soundSummary_ = {};
    }
    self->isActive_ = true;
    const std::uint64_t attempt = self->attempt_;

    std::exception_ptr failure;
    try {
        Task<void> steps = startParts(self, source, attempt);
        co_await steps;
    } catch (...) {
        failure = std::current_exception();
    }
    const bool isOvertaken = attempt != self->attempt_;
    if (!failure && !isOvertaken) {
        self->logger().event("transcriber.start.ready", {{"source", source.logName()}});
        co_return;
    }
    if (isOvertaken) // the call that overtook this one has cleaned up
        failure = std::make_exception_ptr(CancellationError());
    self->logger().important(
        "transcriber.start.failed",
        {{"source", source.logName()}, {"error", localizedDescription(failure)}});
    if (!isOvertaken)
        self->abandon();
    std::rethrow_exception(failure);
}

Task<void> LiveSystemAudioTranscriber::startParts(Self self, AudioSource source,
                                                  std::uint64_t attempt) {
    Task<void> engineStart = startEngine(self, attempt);
    co_await engineStart;
    self->throwIfOvertaken(attempt);

    if (self->shouldRecord()) {
        self->logger().event("transcriber.recorder.start");
        self->environment_.recorder->start();
    }

    Task<void> captureStart =
        source.isMicrophone() ? startMicrophone(self, source) : startSystemAudio(self);
    co_await captureStart;
}

bool LiveSystemAudioTranscriber::shouldRecord() const {
    const AppSettings& settings = environment_.settings;
    if (!*settings.recordWhileCaptioning && !*settings.sessionDiagnosticsEnabled)
        return false;
    return !environment_.mayRecord || environment_.mayRecord();
}

Task<void> LiveSystemAudioTranscriber::startEngine(Self self, std::uint64_t attempt) {
    const double startedAt = self->host().now();
    const std::string locale = self->selectedOption().localeIdentifier;
    const Engine engine = self->makeConfiguredTranscriber();
    self->exchangeEngine(engine);
    try {
        Task<void> starting = engine->start(locale);
        co_await starting;
    } catch (...) {
        // The failure of an engine that has been replaced in the meantime is ignored.
        if (self->isCurrent(engine.get()))
            throw;
    }
    self->throwIfOvertaken(attempt);
    self->logger().event("transcriber.engine.started",
                         {{"elapsedMS", self->elapsedMS(startedAt)}, {"locale", locale}});
}

Task<void> LiveSystemAudioTranscriber::startMicrophone(Self self, AudioSource source) {
    const std::optional<double> sampleRate = self->preferredSampleRate();
    LogFields fields{{"deviceID", source.deviceID().value_or("default")}};
    fields.add("requestedSampleRate", sampleRate ? LogValue(*sampleRate) : LogValue("native"));
    self->logger().event("transcriber.capture.microphone.start", std::move(fields));

    const auto microphone =
        MicrophoneCapture::create(self->host(), self->environment_.sound,
                                  self->environment_.speech.makeConverter, source.deviceID());
    const std::weak_ptr<LiveSystemAudioTranscriber> weak = self;
    microphone->onBuffer = [weak](AudioBufferPtr buffer) {
        if (const auto alive = weak.lock())
            alive->handle(std::move(buffer));
    };
    microphone->onLevel = [weak](double level) {
        if (const auto alive = weak.lock())
            alive->handleLevel(level);
    };
    microphone->onEvent = [weak](const CaptureEvent& event) {
        if (const auto alive = weak.lock())
            alive->handleCaptureEvent(event);
    };
    self->micCapture_ = microphone;
    Task<void> starting = microphone->start(sampleRate);
    co_await starting;
}

Task<void> LiveSystemAudioTranscriber::startSystemAudio(Self self) {
    self->logger().event("transcriber.capture.systemAudio.start");
    {
        const MutexLock lock(self->perfLock_);
        self->didLatchSystemAudioPermission_ = false;
    }
    Task<void> starting = self->capture_->start();
    co_await starting;
}

void LiveSystemAudioTranscriber::stop() {
    logger().event("transcriber.stop.request");
    abandon();
}

void LiveSystemAudioTranscriber::abandon() {
    ++attempt_;
    isActive_ = false;
    capture_->stop();
    if (auto microphone = std::exchange(micCapture_, nullptr))
        spawn(mainExecutor(), stopMicrophone(std::move(microphone)));
    if (const Engine engine = exchangeEngine(nullptr))
        engine->stop();
    environment_.recorder->stop();
}

Task<void>
LiveSystemAudioTranscriber::stopMicrophone(std::shared_ptr<MicrophoneCapture> microphone) {
    Task<void> stopping = microphone->stop();
    co_await stopping;
}

Task<void> LiveSystemAudioTranscriber::finishDrainingAndStop() {
    return drainSession(shared_from_this());
}

Task<void> LiveSystemAudioTranscriber::drainSession(Self self) {
    const double startedAt = self->host().now();
    const auto elapsed = [&] { return LogFields{{"elapsedMS", self->elapsedMS(startedAt)}}; };
    ++self->attempt_;
    self->isActive_ = false;
    self->logger().event("transcriber.finishDraining.start");

    // No more sound is fed once the capture's queue has finished.
    const auto microphone = std::exchange(self->micCapture_, nullptr);
    Task<void> ending = microphone ? microphone->stop() : self->capture_->finish();
    co_await ending;
    self->logger().event("transcriber.finishDraining.captureStopped", elapsed());

    if (const Engine engine = self->currentEngine()) {
        // The engine stays installed, so that its last results are delivered.
        Task<void> draining = engine->finishDrainingAndStop();
        co_await draining;
        if (self->isCurrent(engine.get()))
            self->exchangeEngine(nullptr);
    }
    self->logger().event("transcriber.finishDraining.engineStopped", elapsed());

    Task<std::optional<RecordingMetadata>> closing = self->environment_.recorder->finishAndStop();
    const std::optional<RecordingMetadata> recording = co_await closing;
    LogFields fields = elapsed();
    if (recording)
        fields.add("recordingID", recording->id.text());
    fields.add("byteCount", recording ? recording->byteCount : std::int64_t{0});
    self->logger().event("transcriber.finishDraining.done", std::move(fields));
}

Task<void> LiveSystemAudioTranscriber::swapEngine() {
    return swap(shared_from_this());
}

Task<void> LiveSystemAudioTranscriber::swap(Self self) {
    if (!self->isActive_)
        co_return;
    if (const Engine old = self->currentEngine())
        old->stop();
    const std::string locale = self->selectedOption().localeIdentifier;
    const Engine engine = self->makeConfiguredTranscriber();
    self->exchangeEngine(engine);
    std::exception_ptr failure;
    try {
        Task<void> starting = engine->start(locale);
        co_await starting;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self->isCurrent(engine.get()))
        throw CancellationError();
    if (failure)
        std::rethrow_exception(failure);
}

void LiveSystemAudioTranscriber::throwIfOvertaken(std::uint64_t attempt) const {
    if (attempt != attempt_)
        throw CancellationError();
}

std::int64_t LiveSystemAudioTranscriber::elapsedMS(double since) const {
    return static_cast<std::int64_t>((host().now() - since) * 1000.0);
}

} // namespace tessarune
