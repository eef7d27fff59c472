#include "Tessarune/audio/MicrophoneCapture.h"

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

/// Speech at a usual distance fills only a small part of the scale; this gain makes the level
/// visible.
constexpr double levelGain = 6.0;

LocalizedError notSelectable() {
    return {localized("无法切换到所选麦克风设备。"), MicrophoneCapture::errorDomain,
            MicrophoneCapture::deviceNotSelectable};
}

LocalizedError notAvailable() {
    return {localized("麦克风设备不可用。"), MicrophoneCapture::errorDomain,
            MicrophoneCapture::deviceNotAvailable};
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
    : AudioCapture(host, server, AudioSource::microphone(std::move(deviceID)),
                   "Tessarune.MicrophoneCapture"),
      makeConverter_(std::move(makeConverter)) {}

Task<void> MicrophoneCapture::start(std::optional<double> sampleRate) {
    queue().async([this, self = shared_from_this(), sampleRate] {
        targetFormat_ = sampleRate ? std::optional(AudioFormat{*sampleRate, 1}) : std::nullopt;
    });
    return begin();
}

void MicrophoneCapture::prepare(const std::optional<CaptureStream::Source>& device) {
    levelTick_ = 0;
    if (!device && source().deviceID())
        throw notSelectable();
    if (!device || device->format.channels <= 0 || device->format.sampleRate <= 0)
        throw notAvailable();
    if (!targetFormat_)
        return;
    try {
        converter_ = makeConverter_(device->format, *targetFormat_);
        converterInput_ = device->format;
    } catch (const std::exception&) {
        throw notAvailable();
    }
}

void MicrophoneCapture::fail(Step step, const SoundServerError& error) {
    if (step == Step::connecting)
        throw notAvailable();
    throw SoundServerError(error);
}

void MicrophoneCapture::handleInput(AudioBufferPtr buffer) {
    if (targetFormat_)
        buffer = converted(std::move(buffer));
    if (!buffer || buffer->samples.empty())
        return;
    if (onBuffer)
        onBuffer(buffer);
    ++levelTick_;
    if (levelTick_ % buffersPerLevel == 0 && onLevel)
        onLevel(std::min(rms(*buffer) * levelGain, 1.0));
}

void MicrophoneCapture::handleEvent(const CaptureEvent& event) {
    if (onEvent)
        onEvent(event);
}

AudioBufferPtr MicrophoneCapture::converted(AudioBufferPtr buffer) {
    try {
        if (!converter_ || converterInput_ != buffer->format) {
            // A device with another format took over, or the last conversion failed.
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
