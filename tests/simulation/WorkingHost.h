#pragma once

#include "TessaruneCore/host/SimulatedHost.h"

namespace tessarune::testing {

/// Virtual time that can also jump without running delayed calls, as if the only thread had been
/// busy or the computer had slept.
class WorkingHost final : public Host {
  public:
    double now() const override { return simulated.now() + worked; }
    double wallClock() const override { return now(); }
    void post(Block block) override { simulated.post(std::move(block)); }
    DelayedCall after(double seconds, Block block) override {
        return simulated.after(seconds, std::move(block));
    }
    std::shared_ptr<SerialQueue> serialQueue(std::string_view label,
                                             QueuePriority priority) override {
        return simulated.serialQueue(label, priority);
    }
    bool isOnMainQueue() const override { return simulated.isOnMainQueue(); }

    SimulatedHost simulated{1000};
    double worked = 0;
};

} // namespace tessarune::testing
