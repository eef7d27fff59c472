#pragma once

#include <optional>

namespace tessarune {

/// Detects that live sound has stopped. Has no clock: all times are host times in seconds, and the
/// caller schedules the checks. One thread at a time.
class StallWatch {
  public:
    /// A stall is this many seconds without progress.
    explicit StallWatch(double longestStall) : longestStall_(longestStall) {}

    /// Sound has arrived, or a pass has ended. While a pass runs, no sound is taken, so a long pass
    /// must not look like a stall.
    void progressed(double now) { lastProgressAt_ = now; }

    /// The seconds after which to call `check`; `nullopt` if a check is already scheduled.
    std::optional<double> scheduleCheck(double now);
    /// Whether the sound stalls. Time in which the program itself was suspended does not count.
    bool check(double now);

  private:
    const double longestStall_;
    double lastProgressAt_ = 0;
    std::optional<double> checkAt_; ///< the time for which a check is scheduled
};

} // namespace tessarune
