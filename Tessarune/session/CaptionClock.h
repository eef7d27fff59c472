#pragma once

#include "TessaruneCore/host/Host.h"

#include <memory>

namespace tessarune {

/// The clock of a session's captions. It is stopped while the core processes an event. During a
/// delayed call it shows the time at which the call was due, even if the main queue runs the call
/// late. So the rows depend only on the logged events and times, and a replay of the log produces
/// the same rows.
///
/// Main queue. The host outlives it.
class CaptionClock {
  public:
    /// While a hold exists, the clock stands at its `time`. A nested hold keeps the time of the
    /// outer hold.
    class Hold {
      public:
        ~Hold();
        Hold(const Hold&) = delete;
        double time() const { return time_; }

      private:
        friend class CaptionClock;
        explicit Hold(CaptionClock& clock);

        CaptionClock& clock_;
        const bool isOuter_;
        const double time_;
    };

    explicit CaptionClock(Host& host);

    /// Runs the due calls, then stops the clock until the hold is destroyed. Make a hold around
    /// each change of the core that the event log records, and log the change with the hold's
    /// `time()`.
    [[nodiscard]] Hold hold() { return Hold(*this); }

    double now() const;
    /// Calls the block once the clock has advanced by `delay` seconds.
    void after(double delay, Block block);

  private:
    struct State;

    const std::shared_ptr<State> state_;
};

} // namespace tessarune
