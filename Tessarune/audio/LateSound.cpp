#include "Tessarune/audio/LateSound.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// The maximum drift between a device's clock and the computer's, in seconds per second. Drift
/// makes sound late although none is lost.
constexpr double maximumDrift = 0.001;
/// A smaller gap is ignored.
constexpr double smallestGap = 0.25;
/// The jitter of buffers that arrive at a steady pace.
constexpr double sameLateness = 0.03;
/// The pace of live sound, in seconds of sound per second. Queued sound arrives much faster. If the
/// program was suspended meanwhile, the pace is much lower.
constexpr double slowestPace = 0.5;
constexpr double fastestPace = 1.25;

} // namespace

double LateSound::begin(const AudioBuffer& first, double now) {
    const double missing = end_ ? std::max(0.0, now - first.seconds() - *end_) : 0;
    end_ = now;
    return missing;
}

double LateSound::add(const AudioBuffer& next, double now) {
    const double end = end_.value_or(now - next.seconds()) + next.seconds();
    const double late = std::max(0.0, now - end);
    const double drift = std::min(late, maximumDrift * next.seconds());
    end_ = late > 0 ? end + drift : now;
    return late - drift;
}

void LateSound::hold(AudioBufferPtr buffer, double late, double now) {
    if (held_.empty()) {
        checkedAt_ = now;
        secondsSinceCheck_ = 0;
    } else {
        secondsSinceCheck_ += buffer->seconds();
    }
    held_.push_back({std::move(buffer), late});
}

bool LateSound::hasSteadyPace(double now) {
    const double elapsed = now - std::exchange(checkedAt_, now);
    const double heard = std::exchange(secondsSinceCheck_, 0);
    return heard >= slowestPace * elapsed && heard <= fastestPace * elapsed;
}

std::vector<LateSound::Piece> LateSound::release() {
    double lost = held_.empty() ? 0 : held_.front().late;
    for (const Held& held : held_)
        lost = std::min(lost, held.late);
    if (lost < smallestGap)
        lost = 0;
    std::vector<Piece> pieces;
    for (Held& held : std::exchange(held_, {})) {
        const bool isAfterGap = lost > 0 && held.late <= lost + sameLateness;
        if (isAfterGap)
            end_ = *end_ + lost;
        pieces.push_back({isAfterGap ? std::exchange(lost, 0) : 0, std::move(held.buffer)});
    }
    return pieces;
}

} // namespace tessarune
