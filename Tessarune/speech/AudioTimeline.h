#pragma once

#include <vector>

namespace tessarune {

/// Corrects the recogniser's times after gaps in the sound. The recogniser counts only the sound
/// that it was fed, so its times are too early after each gap. Audio times are seconds of the sound
/// fed.
class AudioTimeline {
  public:
    /// Records that `seconds` of sound were lost at this audio time.
    void addGap(double at, double seconds) {
        if (!(seconds > 0))
            return;
        if (gaps_.empty() || gaps_.back().at != at)
            gaps_.push_back({at, 0});
        gaps_.back().seconds += seconds;
    }
    /// The seconds of sound lost before this audio time.
    double lostBefore(double audioTime) const {
        double lost = 0;
        for (const Gap& gap : gaps_) {
            if (audioTime > gap.at)
                lost += gap.seconds;
        }
        return lost;
    }

  private:
    struct Gap {
        double at;
        double seconds;
    };
    std::vector<Gap> gaps_;
};

} // namespace tessarune
