#include "Tessarune/audio/StereoMix.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessarune {
namespace {

AudioBuffer tenMilliseconds(float left, float right) {
    AudioBuffer buffer;
    buffer.format = {48000, 2};
    for (int frame = 0; frame < 480; ++frame) {
        const float wave = std::sin(static_cast<float>(frame) / 20);
        buffer.samples.insert(buffer.samples.end(), {left * wave, right * wave});
    }
    return buffer;
}

TEST(StereoMixTests, QuietSoundInOppositePhaseIsHeardSoonAfterLoudSound) {
    StereoMix mix;
    EXPECT_EQ(mix.mixed(tenMilliseconds(0.5F, 0.5F))[100], std::sin(5.0F) / 2);
    int silent = 0;
    while (mix.mixed(tenMilliseconds(0.05F, -0.05F))[100] == 0 && silent < 100)
        ++silent;
    EXPECT_LE(silent, 15) << "buffers of 10 ms";
    mix.mixed(tenMilliseconds(0, 0.5F));
    EXPECT_NE(mix.mixed(tenMilliseconds(0, 0.5F))[100], 0) << "the right channel alone";
}

} // namespace
} // namespace tessarune
