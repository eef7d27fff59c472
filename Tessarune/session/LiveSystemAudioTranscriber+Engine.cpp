#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "TessaruneCore/recognition/ModelCatalog.h"

#include <utility>

namespace tessarune {

RecognitionOption LiveSystemAudioTranscriber::selectedOption() const {
    const auto option =
        ModelCatalog::recognitionOption(*environment_.settings.selectedRecognitionOptionID);
    return option ? *option : ModelCatalog::recognitionOptions().front();
}

std::optional<double> LiveSystemAudioTranscriber::preferredSampleRate() const {
    const auto rate = selectedOption().capabilities().preferredCaptureSampleRate;
    return rate ? std::optional(static_cast<double>(*rate)) : std::nullopt;
}

AppleAnalyzerDiagnosticsMode LiveSystemAudioTranscriber::diagnosticsMode() const {
    const AppSettings& settings = environment_.settings;
    return *settings.sessionDiagnosticsEnabled ? *settings.appleAnalyzerDiagnosticsMode
                                               : AppleAnalyzerDiagnosticsMode::off;
}

LiveSystemAudioTranscriber::Engine LiveSystemAudioTranscriber::makeConfiguredTranscriber() {
    const RecognitionOption option = selectedOption();
    const EngineCapabilities capabilities = option.capabilities();
    const AppleAnalyzerDiagnosticsMode mode = diagnosticsMode();
    const auto engine =
        SpeechAnalyzerTranscriber::make(option.localeIdentifier, environment_.speech);
    attachCallbacks(*engine, mode);

    LogFields fields{
        {"optionID", option.id}, {"title", option.title}, {"locale", option.localeIdentifier}};
    const auto sampleRate = capabilities.preferredCaptureSampleRate;
    fields.add("preferredCaptureSampleRate", sampleRate ? LogValue(*sampleRate) : "native")
        .add("punctuatesNatively", capabilities.punctuatesNatively)
        .add("selfSegments", capabilities.selfSegments)
        .add("boundaryUnit", std::string(diagnosticLabel(capabilities.boundaryUnit)))
        .add("maxUnpunctuatedUnits", capabilities.maxUnpunctuatedUnits)
        .add("appleDiagnosticsMode", std::string(name(mode)));
    logger().event("asr.engine.configured", std::move(fields));
    return engine;
}

/// Returns a callback for `engine` that does nothing once another engine has replaced it.
template <typename Callback>
auto LiveSystemAudioTranscriber::whileCurrent(const AudioTranscriber& engine, Callback callback) {
    return [weak = weak_from_this(), identity = &engine, callback](const auto& value) {
        const auto self = weak.lock();
        if (self && self->isCurrent(identity))
            callback(*self, value);
    };
}

void LiveSystemAudioTranscriber::attachCallbacks(SpeechAnalyzerTranscriber& engine,
                                                 AppleAnalyzerDiagnosticsMode mode) {
    using This = LiveSystemAudioTranscriber;
    engine.onEvent = whileCurrent(engine, [](This& self, const ASREvent& event) {
        if (self.onASREvent)
            self.onASREvent(event);
    });
    engine.onError = whileCurrent(engine, [](This& self, const std::exception& error) {
        if (self.onError)
            self.onError(error.what());
    });
    engine.onGuessWithdrawn = [weak = weak_from_this(), identity = &engine] {
        const auto self = weak.lock();
        if (self && self->isCurrent(identity) && self->onGuessWithdrawn)
            self->onGuessWithdrawn();
    };
    engine.onReconcileDecision =
        whileCurrent(engine, [](This& self, const AppleFinalReconcileDecisionRecord& record) {
            if (self.onAppleFinalReconcile)
                self.onAppleFinalReconcile(record);
        });
    if (mode == AppleAnalyzerDiagnosticsMode::off)
        return;
    engine.onSummaryResult =
        whileCurrent(engine, [](This& self, const AppleSpeechAnalyzerSummaryRecord& record) {
            if (self.onAppleSummaryResult)
                self.onAppleSummaryResult(record);
        });
    if (mode != AppleAnalyzerDiagnosticsMode::fullRaw)
        return;
    engine.onRawResult =
        whileCurrent(engine, [](This& self, const AppleSpeechAnalyzerRawResultRecord& record) {
            if (self.onAppleRawResult)
                self.onAppleRawResult(record);
        });
}

LiveSystemAudioTranscriber::Engine LiveSystemAudioTranscriber::exchangeEngine(Engine next) {
    Engine former;
    {
        const MutexLock lock(transcriberLock_);
        former = std::exchange(transcriber_, std::move(next));
    }
    const PerfStats formerPerf = former ? former->perfStats() : PerfStats();
    const MutexLock lock(perfLock_);
    if (former)
        lastEnginePerf_ = formerPerf;
    return former;
}

LiveSystemAudioTranscriber::Engine LiveSystemAudioTranscriber::currentEngine() const {
    const MutexLock lock(transcriberLock_);
    return transcriber_;
}

bool LiveSystemAudioTranscriber::isCurrent(const AudioTranscriber* engine) const {
    const MutexLock lock(transcriberLock_);
    return transcriber_.get() == engine;
}

void LiveSystemAudioTranscriber::requestFinalization(const std::string& reason) {
    if (const Engine engine = currentEngine())
        engine->requestFinalization(reason);
}

PerfStats LiveSystemAudioTranscriber::perfStats() const {
    if (const Engine engine = currentEngine())
        return engine->perfStats();
    const MutexLock lock(perfLock_);
    return lastEnginePerf_;
}

PerfStats LiveSystemAudioTranscriber::wrapperPerfStats() const {
    const MutexLock lock(perfLock_);
    return {{"audioBufferCount", soundSummary_.buffers},
            {"audioBufferInfoEvents", soundSummary_.infoEvents},
            {"systemAudioPermissionMarkEvents", soundSummary_.permissionMarkEvents},
            {"audioLevelEvents", soundSummary_.levelEvents}};
}

double LiveSystemAudioTranscriber::sampleRate() const {
    const MutexLock lock(perfLock_);
    return soundSummary_.sampleRate;
}

// Sound

void LiveSystemAudioTranscriber::handle(AudioBufferPtr buffer) {
    const double sampleRate = buffer->format.sampleRate;
    const Engine engine = currentEngine();
    bool rateChanged = false;
    {
        const MutexLock lock(perfLock_);
        ++soundSummary_.buffers;
        rateChanged = sampleRate != soundSummary_.sampleRate;
        if (rateChanged) {
            soundSummary_.sampleRate = sampleRate;
            ++soundSummary_.infoEvents;
        }
    }
    if (rateChanged && onAudioBufferInfo)
        onAudioBufferInfo(sampleRate);
    environment_.recorder->append(buffer);
    if (engine)
        engine->append(std::move(buffer));
}

void LiveSystemAudioTranscriber::handleLevel(double level) {
    {
        const MutexLock lock(perfLock_);
        ++soundSummary_.levelEvents;
    }
    if (onLevel)
        onLevel(level);
}

void LiveSystemAudioTranscriber::handleCaptureEvent(const CaptureEvent& event) {
    if (event.kind == CaptureEvent::Kind::resumed) {
        environment_.recorder->appendSilence(event.gapSeconds);
        if (const Engine engine = currentEngine())
            engine->skip(event.gapSeconds);
    }
    if (onCaptureEvent)
        onCaptureEvent(event);
}

void LiveSystemAudioTranscriber::latchSystemAudioPermission() {
    {
        const MutexLock lock(perfLock_);
        if (std::exchange(didLatchSystemAudioPermission_, true))
            return;
        ++soundSummary_.permissionMarkEvents;
    }
    // Delivered sound proves the permission.
    host().post([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->environment_.permissions.latch(PermissionsManager::Key::systemAudioStatus,
                                                 PermissionsManager::Status::granted);
    });
}

void LiveSystemAudioTranscriber::systemAudioCapture(SystemAudioCapture&, AudioBufferPtr didOutput) {
    latchSystemAudioPermission();
    handle(std::move(didOutput));
}

void LiveSystemAudioTranscriber::systemAudioCaptureDidMeasure(SystemAudioCapture&, double level) {
    handleLevel(level);
}

void LiveSystemAudioTranscriber::systemAudioCaptureDidStaySilent(SystemAudioCapture&) {
    if (onSystemAudioSilent)
        onSystemAudioSilent();
}

void LiveSystemAudioTranscriber::systemAudioCaptureDidChange(SystemAudioCapture&,
                                                             const CaptureEvent& event) {
    handleCaptureEvent(event);
}

} // namespace tessarune
