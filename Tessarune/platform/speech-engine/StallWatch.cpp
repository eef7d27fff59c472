#include "Tessarune/platform/speech-engine/StallWatch.h"

#include <algorithm>

namespace tessarune {

namespace {

/// A check that is more than this many seconds late shows that the program itself was suspended.
constexpr double lateSeconds = 1.0;
/// The minimum delay of a check. Without it, a check that is slightly too early by rounding could
/// be repeated forever.
constexpr double shortestWait = 0.05;

} // namespace

std::optional<double> StallWatch::scheduleCheck(double now) {
    if (checkAt_)
        return std::nullopt;
    const double wait = std::max(lastProgressAt_ + longestStall_ - now, shortestWait);
    checkAt_ = now + wait;
    return wait;
}

bool StallWatch::check(double now) {
    if (const double late = now - checkAt_.value_or(now); late > lateSeconds)
        lastProgressAt_ += late;
    checkAt_.reset();
    return now - lastProgressAt_ >= longestStall_;
}

} // namespace tessarune
