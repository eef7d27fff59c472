#include "Tessarune/audio/LateSound.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// The maximum drift between a device's clock and the computer's, per second; lateness up to this
/// is not lost sound.
constexpr double mostDrift = 0.001;
/// A smaller remainder is ignored.
constexpr double smallestHole = 0.25;
/// The jitter of buffers that arrive at a steady pace.
constexpr double sameLateness = 0.03;
/// The pace of live sound, in seconds of sound per second. Queued sound arrives much faster; a
/// program that is held up again gets much less.
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
    const double drift = std::min(late, mostDrift * next.seconds());
    end_ = late > 0 ? end + drift : now;
    return late - drift;
}

void LateSound::hold(AudioBufferPtr buffer, double late, double now) {
    if (held_.empty()) {
        lookedAt_ = now;
        secondsSinceLook_ = 0;
    } else {
        secondsSinceLook_ += buffer->seconds();
    }
    held_.push_back({std::move(buffer), late});
}

bool LateSound::hasFoundItsPace(double now) {
    const double elapsed = now - std::exchange(lookedAt_, now);
    const double heard = std::exchange(secondsSinceLook_, 0);
    return heard >= slowestPace * elapsed && heard <= fastestPace * elapsed;
}

std::vector<LateSound::Piece> LateSound::release() {
    double lost = held_.empty() ? 0 : held_.front().late;
    for (const Held& held : held_)
        lost = std::min(lost, held.late);
    if (lost < smallestHole)
        lost = 0;
    std::vector<Piece> pieces;
    for (Held& held : std::exchange(held_, {})) {
        const bool isAfterHole = lost > 0 && held.late <= lost + sameLateness;
        if (isAfterHole)
            end_ = *end_ + lost;
        pieces.push_back({isAfterHole ? std::exchange(lost, 0) : 0, std::move(held.buffer)});
    }
    return pieces;
}

} // namespace tessarune
