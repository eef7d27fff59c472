#include "Tessarune/platform/speech-engine/HumFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace tessarune {
namespace {

constexpr std::size_t rate = 16000;

/// Four seconds of soft noise with hum, whose low harmonics the high-pass has removed; then four
/// seconds of the noise alone.
std::vector<float> humThenNoise(double hertz) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 0.004F);
    std::vector<float> sound;
    for (std::size_t i = 0; i < 8 * rate; ++i) {
        double sample = 0;
        for (int harmonic = 5; harmonic < 16 && i < 4 * rate; ++harmonic)
            sample +=
                0.3 / harmonic *
                std::sin(2 * std::numbers::pi * hertz * harmonic * static_cast<double>(i) / rate);
        sound.push_back(static_cast<float>(sample) + noise(random));
    }
    return sound;
}

float loudness(std::span<const float> sound) {
    double sum = 0;
    for (const float sample : sound)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return static_cast<float>(std::sqrt(sum / static_cast<double>(sound.size())));
}

TEST(HumFilterTests, RemovesHumAndNothingElseAlsoInPieces) {
    for (const double hertz : {50.0, 60.0}) {
        const std::vector<float> sound = humThenNoise(hertz);
        const std::vector<float> whole = HumFilter(rate).filtered(sound);
        const std::span before(sound);
        const std::span after(whole);
        EXPECT_LT(loudness(after.subspan(3 * rate, rate)),
                  loudness(before.subspan(3 * rate, rate)) / 10)
            << hertz << " Hz";
        for (std::size_t i = 6 * rate; i < sound.size(); ++i) // two seconds after the hum
            ASSERT_EQ(whole[i], sound[i]) << hertz << " Hz";

        HumFilter filter(rate);
        std::vector<float> pieces = filter.filtered({sound.begin(), sound.begin() + 777});
        const std::vector<float> rest = filter.filtered({sound.begin() + 777, sound.end()});
        pieces.insert(pieces.end(), rest.begin(), rest.end());
        EXPECT_EQ(pieces, whole) << hertz << " Hz";
        const std::vector<float> noise(sound.begin() + 5 * rate, sound.end());
        EXPECT_EQ(HumFilter(rate).filtered(noise), noise);

        std::vector<float> voice; // repeats itself, but more briefly than hum
        for (int i = 0; i < 30; ++i) {
            const auto block = i % 3 < 2 ? sound.begin() : noise.begin();
            voice.insert(voice.end(), block, block + rate / 10);
        }
        EXPECT_EQ(HumFilter(rate).filtered(voice), voice);
    }
}

} // namespace
} // namespace tessarune
