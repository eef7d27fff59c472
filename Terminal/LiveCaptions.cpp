#include "Terminal/LiveCaptions.h"

#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "TessaruneCore/captions/LiveBoundaryDecisionHandler.h"

#include <utility>

namespace tessarune {

std::shared_ptr<LiveCaptions> LiveCaptions::make(SpeechPlatform platform, SoundServer& sound,
                                                 const AppSettings& settings) {
    return std::shared_ptr<LiveCaptions>(new LiveCaptions(std::move(platform), sound, settings));
}

LiveCaptions::LiveCaptions(SpeechPlatform platform, SoundServer& sound, const AppSettings& settings)
    : core(LiveCaptionCoreFactory::make(platform.host, settings)),
      platform_(std::move(platform)),
      sound_(sound) {
    core.onActivity = [this](CaptionCore::Activity) {
        if (onChange)
            onChange();
    };
    core.onBoundaryDecision = [this, &settings](const BoundaryObservation& observation) {
        const auto reason = LiveBoundaryDecisionHandler::engineFinalizationReason(
            observation, *settings.appleAnalyzerEarlyFinalize);
        if (reason && transcriber_)
            transcriber_->requestFinalization(*reason);
    };
    core.reset(platform_.host.now());
}

bool LiveCaptions::writeEventLog(const std::filesystem::path& path) {
    eventLog_ = ASREventLog::Writer::open(platform_.host, path);
    return eventLog_ != nullptr;
}

void LiveCaptions::makeTranscriber(const std::string& locale) {
    transcriber_ = SpeechAnalyzerTranscriber::make(locale, platform_);
    const std::weak_ptr<LiveCaptions> weak = weak_from_this();
    Host& host = platform_.host;
    transcriber_->onEvent = [weak, &host](const ASREvent& event) {
        host.post([weak, event] {
            if (const auto self = weak.lock())
                self->take(event);
        });
    };
    transcriber_->onError = [weak, &host](const std::exception& error) {
        host.post([weak, text = std::string(error.what())] {
            const auto self = weak.lock();
            if (self && self->onError)
                self->onError(text);
        });
    };
}

Task<void> LiveCaptions::startRecogniser(std::string locale) {
    const auto self = shared_from_this();
    makeTranscriber(locale);
    Task<void> starting = transcriber_->start(locale);
    co_await starting;
}

Task<void> LiveCaptions::startCapture(AudioSource source) {
    const auto self = shared_from_this();
    if (source.isSystemAudio()) {
        system_ = SystemAudioCapture::create(platform_.host, sound_);
        system_->delegate = weak_from_this();
        Task<void> capturing = system_->start();
        co_await capturing;
        co_return;
    }
    microphone_ = MicrophoneCapture::create(platform_.host, sound_, platform_.makeConverter,
                                            source.deviceID());
    microphone_->onBuffer = [transcriber = transcriber_](AudioBufferPtr buffer) {
        transcriber->append(buffer);
    };
    microphone_->onEvent = [weak = weak_from_this()](const CaptureEvent& event) {
        if (const auto alive = weak.lock())
            alive->say(event);
    };
    Task<void> capturing = microphone_->start(std::nullopt);
    co_await capturing;
}

Task<void> LiveCaptions::finish() {
    const auto self = shared_from_this();
    core.cancelPendingPartial();
    if (microphone_) {
        Task<void> stopping = microphone_->stop();
        co_await stopping;
    }
    if (system_)
        system_->stop();
    if (transcriber_) {
        Task<void> draining = transcriber_->finishDrainingAndStop();
        co_await draining;
    }
    // The events of the drain were posted before the drain was over, so they have been taken.
    core.sealLiveIntoHistory(platform_.host.now());
    if (eventLog_)
        eventLog_->close();
}

double LiveCaptions::takenSeconds() const {
    if (!transcriber_)
        return 0;
    const PerfStats stats = transcriber_->perfStats();
    const double batches = stats.at("analyzerInputBatches");
    if (batches == 0)
        return 0;
    return stats.at("convertedAudioSeconds") * (1 - stats.at("analyzerInputsWaiting") / batches);
}

void LiveCaptions::take(const ASREvent& event) {
    if (eventLog_)
        eventLog_->append(event);
    core.ingest(event);
}

void LiveCaptions::say(const CaptureEvent& event) {
    std::string text;
    switch (event.kind) {
    case CaptureEvent::Kind::interrupted:
        text = "The sound stopped: " + event.text;
        break;
    case CaptureEvent::Kind::resumed:
        text = "The sound is back.";
        break;
    case CaptureEvent::Kind::deviceChanged:
        text = "Now listening to " + event.text + ".";
        break;
    }
    platform_.host.post([weak = weak_from_this(), text = std::move(text)] {
        const auto self = weak.lock();
        if (self && self->onStatus)
            self->onStatus(text);
    });
}

void LiveCaptions::systemAudioCapture(SystemAudioCapture&, AudioBufferPtr didOutput) {
    transcriber_->append(std::move(didOutput));
}

void LiveCaptions::systemAudioCaptureDidMeasure(SystemAudioCapture&, double) {}

void LiveCaptions::systemAudioCaptureDidStaySilent(SystemAudioCapture&) {
    if (onStatus)
        onStatus("Nothing has been heard yet. Is something playing?");
}

void LiveCaptions::systemAudioCaptureDidChange(SystemAudioCapture&, const CaptureEvent& event) {
    say(event);
}

} // namespace tessarune
