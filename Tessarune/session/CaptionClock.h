#pragma once

#include "TessaruneCore/host/Host.h"

#include <memory>
#include <optional>

namespace tessarune {

/// The time by which the captions of a session run. It stands still while the core works on an
/// event, and a delayed call happens at the moment when it was due, however late the main queue
/// comes to it. So the rows depend on nothing but the events and the times in their log, and a
/// replay of the log gives the same rows.
///
/// Main queue. The host outlives it.
class CaptionClock {
  public:
    /// While it lives, the clock stands at `t`. Within another one it has the time of that one.
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

    /// Makes the calls that are due, then stops the clock. To be held around whatever changes the
    /// core from outside.
    [[nodiscard]] Hold hold() { return Hold(*this); }

    double now() const;
    /// Calls the block once the clock has advanced by `delay` seconds.
    void after(double delay, Block block);

  private:
    struct State;

    const std::shared_ptr<State> state_;
};

} // namespace tessarune
