#include "Tessarune/platform/speech-engine/HighPass.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tessarune {
namespace {

TEST(HighPassTests, AttenuatesTonesBelowItsLimitAlsoInPieces) {
    constexpr double rate = 16000;
    struct Case {
        double hertz, least, most; // bounds of the tone's remaining amplitude
    };
    for (const Case& c : {Case{20, 0, 0.011}, Case{100, 0.2, 0.26}, Case{200, 0.69, 0.72},
                          Case{1000, 0.99, 1.01}, Case{7000, 0.99, 1.01}}) {
        std::vector<float> tone(16000);
        for (std::size_t i = 0; i < tone.size(); ++i)
            tone[i] = static_cast<float>(
                std::sin(2 * std::numbers::pi * c.hertz * static_cast<double>(i) / rate));
        const std::vector<float> whole = HighPass(200, rate).filtered(tone);
        float loudest = 0; // in the second half, when the filter has settled
        for (std::size_t i = tone.size() / 2; i < tone.size(); ++i)
            loudest = std::max(loudest, std::abs(whole[i]));
        EXPECT_GE(loudest, c.least) << c.hertz << " Hz";
        EXPECT_LE(loudest, c.most) << c.hertz << " Hz";

        HighPass filter(200, rate);
        std::vector<float> pieces = filter.filtered(std::span(tone).first(777));
        const std::vector<float> rest = filter.filtered(std::span(tone).subspan(777));
        pieces.insert(pieces.end(), rest.begin(), rest.end());
        EXPECT_EQ(pieces, whole) << c.hertz << " Hz";
    }
}

} // namespace
} // namespace tessarune
