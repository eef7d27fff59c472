#include "Tessarune/playback/Loudness.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

/// A file of up to this length is read completely, which takes a hundredth of a second.
constexpr double shortFileSeconds = 60;
/// Of a longer file, `partCount` parts of `partSeconds` each are read.
constexpr int partCount = 40;
constexpr double partSeconds = 0.5;

/// Samples above this level are compressed; full scale is 1.
constexpr float kneeLevel = 0.8F;

class SquareMeter {
  public:
    void add(const AudioBuffer& sound) {
        for (const float sample : sound.samples)
            sum_ += static_cast<double>(sample) * static_cast<double>(sample);
        count_ += sound.samples.size();
    }
    double mean() const { return count_ > 0 ? sum_ / static_cast<double>(count_) : 0; }

  private:
    double sum_ = 0;
    std::size_t count_ = 0;
};

/// Measures the next `seconds` of sound, as far as they are readable. Returns whether the file has
/// ended.
bool measure(MediaFile& file, double seconds, SquareMeter& meter) {
    try {
        while (seconds > 0) {
            const AudioBufferPtr block = file.read();
            if (!block)
                return true;
            meter.add(*block);
            seconds -= block->seconds();
        }
    } catch (const MediaFileError&) { // the readable parts are enough for an estimate
    }
    return false;
}

float compressed(float sample) {
    const float level = std::abs(sample);
    if (level <= kneeLevel)
        return sample;
    constexpr float headroom = 1 - kneeLevel;
    return std::copysign(kneeLevel + headroom * std::tanh((level - kneeLevel) / headroom), sample);
}

} // namespace

double Loudness::gainFor(double meanSquare) {
    if (!(meanSquare > 0))
        return 0;
    return std::min(levelDB - 10 * std::log10(meanSquare), maximumGainDB);
}

Loudness Loudness::measured(MediaFile& file, const std::stop_token& stop) {
    SquareMeter meter;
    AudioBufferPtr block;
    while (!stop.stop_requested() && (block = file.read()))
        meter.add(*block);
    return {gainFor(meter.mean()), !stop.stop_requested()};
}

Loudness Loudness::estimated(MediaFile& file) {
    const double duration = file.duration().value_or(0);
    SquareMeter meter;
    if (duration <= shortFileSeconds) {
        const bool isExact = measure(file, shortFileSeconds + 1, meter);
        return {gainFor(meter.mean()), isExact};
    }
    for (int part = 0; part < partCount; ++part) {
        file.seek(duration * part / partCount);
        measure(file, partSeconds, meter);
    }
    return {gainFor(meter.mean()), false};
}

void LevelControl::setGain(double gainDB, bool atOnce) {
    wantedDB_ = gainDB;
    if (atOnce)
        gainDB_ = gainDB;
}

void LevelControl::apply(AudioBuffer& sound) {
    if (sound.samples.empty())
        return;
    const double step = changePerSecondDB * sound.seconds();
    const double reached = gainDB_ + std::clamp(wantedDB_ - gainDB_, -step, step);
    const auto from = static_cast<float>(std::pow(10, gainDB_ / 20));
    const auto to = static_cast<float>(std::pow(10, reached / 20));
    const float rise = (to - from) / static_cast<float>(sound.samples.size());
    for (std::size_t i = 0; i < sound.samples.size(); ++i)
        sound.samples[i] = compressed(sound.samples[i] * (from + rise * static_cast<float>(i)));
    gainDB_ = reached;
}

} // namespace tessarune
