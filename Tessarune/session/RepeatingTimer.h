#pragma once

#include "TessaruneCore/host/Host.h"

#include <utility>

namespace tessarune {

/// Calls a block on the main queue every `seconds`. Destroying the timer, even from inside the
/// block, ends the calls at once. Main queue; the host must outlive it.
class RepeatingTimer {
  public:
    RepeatingTimer(Host& host, double seconds, Block block)
        : host_(host), seconds_(seconds), block_(std::move(block)) {
        arm();
    }
    ~RepeatingTimer() { next_.cancel(); }
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

  private:
    void arm() {
        next_ = host_.after(seconds_, [this] {
            arm();
            // The block may destroy this timer.
            const Block block = block_;
            block();
        });
    }

    Host& host_;
    const double seconds_;
    const Block block_;
    DelayedCall next_;
};

} // namespace tessarune
