#include "Tessarune/platform/speech-engine/HumFilter.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

/// Five periods of 50 Hz, or six of 60 Hz.
constexpr double blockSeconds = 0.1;
/// One period of 50 Hz, and three of 60 Hz, because one period of 60 Hz is not a whole number of
/// samples.
constexpr double delay50Seconds = 0.02;
constexpr double delay60Seconds = 0.05;
/// With these values, hum is gone after one or two seconds.
constexpr double feedback50 = 0.98;
constexpr double feedback60 = 0.95;
/// Limits of the likeness of successive blocks: above the first, a block is hum; below the second,
/// it is not. A pause with hum repeats itself for several blocks; speech does not.
constexpr double humLikeness = 0.85;
constexpr double otherLikeness = 0.5;
/// The number of blocks with hum that switch the filter on, and of pauses without hum that switch
/// it off.
constexpr int blocksOfHum = 2;
constexpr int blocksWithout = 5;
/// Limits of a block's energy, as shares of the loudest block's energy: hum below the first does no
/// harm, and a block above the second is not a pause.
constexpr double softestHum = 1e-3;
constexpr double loudestPause = 1e-2;
/// The factor by which `loudest_` fades per block: to a tenth after about 20 s.
constexpr double fading = 0.99;
/// The maximum mean square of silence, which may contain rounding errors.
constexpr double silence = 1e-10;

} // namespace

HumFilter::Comb::Comb(std::size_t delay, double feedback) : feedback_(feedback), outputs_(delay) {}

float HumFilter::Comb::next(float sample, float before) {
    const double change = static_cast<double>(sample) - static_cast<double>(before);
    const double out = change * (1 + feedback_) / 2 + feedback_ * outputs_[place_];
    outputs_[place_] = out;
    place_ = (place_ + 1) % outputs_.size();
    return static_cast<float>(out);
}

HumFilter::HumFilter(double sampleRate)
    : blockLength_(static_cast<std::size_t>(sampleRate * blockSeconds)),
      past_(blockLength_),
      byBlock_{blockLength_},
      by50_{static_cast<std::size_t>(sampleRate * delay50Seconds)},
      by60_{static_cast<std::size_t>(sampleRate * delay60Seconds)},
      comb50_(by50_.delay, feedback50),
      comb60_(by60_.delay, feedback60) {}

std::vector<float> HumFilter::filtered(std::vector<float> samples) {
    for (float& sample : samples) {
        // Both filters always run, so that they have settled when they are needed.
        const float without50 = comb50_.next(sample, before(by50_.delay));
        const float without60 = comb60_.next(sample, before(by60_.delay));
        listen(sample);
        if (heard_ != Mains::none)
            sample = heard_ == Mains::hertz50 ? without50 : without60;
    }
    return samples;
}

float HumFilter::before(std::size_t delay) const {
    return past_[(place_ + blockLength_ - delay) % blockLength_];
}

void HumFilter::listen(float sample) {
    const double now = static_cast<double>(sample);
    energy_ += now * now;
    for (Likeness* each : {&byBlock_, &by50_, &by60_}) {
        const auto earlier = static_cast<double>(before(each->delay));
        each->product += now * earlier;
        each->energy += earlier * earlier;
    }
    past_[place_] = sample;
    place_ = (place_ + 1) % blockLength_;
    if (place_ == 0)
        judgeBlock();
}

double HumFilter::likeness(const Likeness& of) const {
    const double both = std::sqrt(energy_ * of.energy);
    return both > 0 ? of.product / both : 0;
}

void HumFilter::judgeBlock() {
    loudest_ = std::max(energy_, loudest_ * fading);
    const bool isHeard = energy_ > silence * static_cast<double>(blockLength_);
    const double repeats = likeness(byBlock_);
    if (isHeard && energy_ > loudest_ * softestHum && repeats > humLikeness) {
        clearBlocks_ = 0;
        if (++humBlocks_ >= blocksOfHum)
            heard_ = likeness(by50_) > likeness(by60_) ? Mains::hertz50 : Mains::hertz60;
    } else {
        humBlocks_ = 0;
        const bool isPause = isHeard && energy_ < loudest_ * loudestPause;
        if (isPause && repeats < otherLikeness && ++clearBlocks_ >= blocksWithout)
            heard_ = Mains::none;
    }
    energy_ = 0;
    for (Likeness* each : {&byBlock_, &by50_, &by60_})
        each->product = each->energy = 0;
}

} // namespace tessarune
