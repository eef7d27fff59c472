#pragma once

#include "Tessarune/platform/speech-engine/QuietDetector.h"
#include "TessaruneCore/host/OneShot.h"

#include <span>
#include <vector>

namespace tessarune {

/// The requests to close the open line at the next rest in the sound. One thread at a time.
class LineClosing {
  public:
    /// If no rest comes before `deadline` (seconds of the session), the request lapses, and the
    /// engine ends the line by its own rules. `end` resumes `done`.
    void request(double deadline, OneShot<bool> done) {
        deadline_ = deadline;
        waiting_.push_back(done);
    }
    bool isRequested() const { return !waiting_.empty(); }
    bool isTooLate(double takenSeconds) const { return takenSeconds > deadline_; }

    void hear(std::span<const float> samples) { quiet_.hear(samples); }
    bool isAtRest() const { return quiet_.isQuiet(); }

    /// Ends all requests, whether or not the line was closed, and resumes their waiters.
    void end() {
        for (const OneShot<bool>& done : waiting_)
            done.resume(true);
        waiting_.clear();
    }

  private:
    QuietDetector quiet_;
    double deadline_ = 0; ///< of the latest request
    std::vector<OneShot<bool>> waiting_;
};

} // namespace tessarune
