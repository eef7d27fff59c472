#include "Tessarune/audio/SystemAudioCapture.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

using Case = SystemAudioCaptureError::Case;

std::shared_ptr<SystemAudioCapture> SystemAudioCapture::create(Host& host, SoundServer& server) {
    return std::shared_ptr<SystemAudioCapture>(new SystemAudioCapture(host, server));
}

SystemAudioCapture::SystemAudioCapture(Host& host, SoundServer& server)
    : AudioCapture(host, server, AudioSource::systemAudio(),
                   "Tessarune.SystemAudioCapture.processTapQueue") {}

SystemAudioCapture::~SystemAudioCapture() {
    silentStartCheck_.cancel();
}

void SystemAudioCapture::prepare(const std::optional<CaptureStream::Source>& device) {
    bufferCount_ = 0;
    if (!device)
        throw SystemAudioCaptureError(Case::failedToReadTapUID, SoundServerError::noSuchDevice);
    if (device->format.sampleRate <= 0 || device->format.channels <= 0)
        throw SystemAudioCaptureError(Case::unsupportedTapFormat);
}

void SystemAudioCapture::fail(Step step, const SoundServerError& error) {
    throw SystemAudioCaptureError(step == Step::connecting ? Case::failedToCreateTap
                                                           : Case::failedToStartDevice,
                                  error.status());
}

void SystemAudioCapture::handleInput(AudioBufferPtr buffer) {
    if (!buffer || buffer->samples.empty())
        return;
    ++bufferCount_;
    if (bufferCount_ == 1)
        silentStartCheck_.cancel();
    auto listener = delegate.lock();
    if (!listener)
        return;
    listener->systemAudioCapture(*this, buffer);
    if (bufferCount_ == 1 || bufferCount_ % buffersPerLevel == 0)
        listener->systemAudioCaptureDidMeasure(*this, audioLevel(*buffer));
}

void SystemAudioCapture::handleEvent(const CaptureEvent& event) {
    if (const auto listener = delegate.lock())
        listener->systemAudioCaptureDidChange(*this, event);
}

void SystemAudioCapture::didOpen() {
    if (bufferCount_ > 0)
        return; // the first buffer was faster than the answer to the start
    const auto weak =
        std::weak_ptr(std::static_pointer_cast<SystemAudioCapture>(shared_from_this()));
    silentStartCheck_ = host().after(silentStartTimeoutSeconds, [weak, start = startCount()] {
        if (const auto capture = weak.lock()) {
            capture->queue().async([weak, start] {
                if (const auto checked = weak.lock())
                    checked->checkForSilentStart(start);
            });
        }
    });
}

void SystemAudioCapture::checkForSilentStart(int start) {
    if (start != startCount() || bufferCount_ > 0)
        return;
    const auto weak =
        std::weak_ptr(std::static_pointer_cast<SystemAudioCapture>(shared_from_this()));
    host().post([weak] {
        const auto capture = weak.lock();
        const auto listener = capture ? capture->delegate.lock() : nullptr;
        if (listener)
            listener->systemAudioCaptureDidStaySilent(*capture);
    });
}

double SystemAudioCapture::audioLevel(const AudioBuffer& buffer) {
    if (buffer.samples.empty())
        return 0;
    const double loudness = std::max(rms(buffer), 0.000001);
    return std::clamp((20 * std::log10(loudness) + 60) / 60, 0.0, 1.0);
}

} // namespace tessarune
