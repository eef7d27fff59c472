#include "Tessarune/platform/speech-engine/HighPass.h"

#include <cmath>
#include <numbers>

namespace tessarune {

/// Derives the coefficients by the bilinear transform from the analog Butterworth high-pass
/// s² / (s² + √2 s + 1), whose cutoff is 1. `k` moves the cutoff.
HighPass::HighPass(double cutoff, double sampleRate) {
    const double k = std::tan(std::numbers::pi * cutoff / sampleRate);
    const double norm = 1 / (1 + std::numbers::sqrt2 * k + k * k);
    gain_ = norm;
    feedback1_ = 2 * (k * k - 1) * norm;
    feedback2_ = (1 - std::numbers::sqrt2 * k + k * k) * norm;
}

std::vector<float> HighPass::filtered(std::span<const float> samples) {
    std::vector<float> result;
    result.reserve(samples.size());
    for (const float sample : samples) {
        const double in = gain_ * static_cast<double>(sample);
        const double out = in + state1_;
        state1_ = -2 * in - feedback1_ * out + state2_;
        state2_ = in - feedback2_ * out;
        result.push_back(static_cast<float>(out));
    }
    return result;
}

} // namespace tessarune
