#pragma once

#include <optional>
#include <vector>

namespace tessarune {

/// Puts the recogniser's times right after holes in the capture. The recogniser counts the sound
/// that it was fed from the moment of the first; whatever was lost in between is missing from its
/// times, and from then on they are too early. A value.
class AudioTimeline {
  public:
    /// A stretch of sound has arrived, `now` at its end.
    void add(double seconds, double now) {
        if (!epoch_)
            epoch_ = now - seconds;
        fedSeconds_ += seconds;
    }
    /// Before the next stretch, `seconds` of sound were lost.
    void addGap(double seconds) {
        if (epoch_ && seconds > 0)
            gaps_.push_back({*epoch_ + fedSeconds_, seconds});
    }
    /// The recogniser's `time` (seconds since 1970) as it was on the clock.
    double corrected(double time) const {
        double lost = 0;
        for (const Gap& gap : gaps_) {
            if (time > gap.at)
                lost += gap.seconds;
        }
        return time + lost;
    }
    bool hasGaps() const { return !gaps_.empty(); }

  private:
    struct Gap {
        double at; ///< in the recogniser's time
        double seconds;
    };
    std::optional<double> epoch_;
    double fedSeconds_ = 0;
    std::vector<Gap> gaps_;
};

} // namespace tessarune
