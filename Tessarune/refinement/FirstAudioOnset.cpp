#include "Tessarune/refinement/FirstAudioOnset.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

constexpr double blockSeconds = 0.05;

} // namespace

FirstAudioOnset::FirstAudioOnset(AudioFormat format, float rmsThreshold, double maxScanSeconds)
    : format_(format),
      threshold_(rmsThreshold),
      blockFrames_(static_cast<std::size_t>(std::max(format.sampleRate * blockSeconds, 1.0))),
      maximumFrames_(static_cast<std::size_t>(format.sampleRate * maxScanSeconds)) {}

void FirstAudioOnset::hear(const AudioBuffer& sound) {
    const auto channels = static_cast<std::size_t>(std::max(format_.channels, 1));
    for (std::size_t frame = 0; frame < sound.frames(); ++frame) {
        if (onset_ || heardFrames_ + openFrames_ >= maximumFrames_)
            return;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const double sample = sound.samples[frame * channels + channel];
            openSquares_ += sample * sample;
        }
        if (++openFrames_ == blockFrames_)
            endBlock();
    }
}

void FirstAudioOnset::finish() {
    if (openFrames_ > 0 && !onset_)
        endBlock();
}

void FirstAudioOnset::endBlock() {
    const auto samples = static_cast<double>(openFrames_) * std::max(format_.channels, 1);
    if (std::sqrt(openSquares_ / samples) >= static_cast<double>(threshold_))
        onset_ = static_cast<double>(heardFrames_) / format_.sampleRate;
    heardFrames_ += openFrames_;
    openFrames_ = 0;
    openSquares_ = 0;
}

} // namespace tessarune
