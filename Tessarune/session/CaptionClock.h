#pragma once

#include "TessaruneCore/host/Host.h"

#include <memory>
#include <optional>

namespace tessarune {

/// The clock of a session's captions. It stops while the core processes an event, and a delayed
/// call runs at its due time, however late the main queue gets to it. So the rows depend only on
/// the logged events and times, and a replay of the log gives the same rows.
///
/// Main queue. The host outlives it.
class CaptionClock {
  public:
    /// While it lives, the clock is stopped at `t`. A nested one keeps the time of the outer one.
    class Hold {
      public:
        ~Hold();
        Hold(const Hold&) = delete;
        double t() const { return t_; }

      private:
        friend class CaptionClock;
        explicit Hold(CaptionClock& clock);

        CaptionClock& clock_;
        const bool isOuter_;
        const double t_;
    };

    explicit CaptionClock(Host& host);

    /// Runs the due calls, then stops the clock. Hold it around every change of the core from
    /// outside.
    [[nodiscard]] Hold hold() { return Hold(*this); }

    double now() const;
    /// Calls the block once the clock has advanced by `delay` seconds.
    void after(double delay, Block block);

  private:
    struct State;

    const std::shared_ptr<State> state_;
};

} // namespace tessarune
