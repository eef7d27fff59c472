#include "Tessarune/session/CaptionClock.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

struct CaptionClock::State {
    struct Call {
        double due;
        Block block;
    };

    explicit State(Host& itsHost) : host(itsHost) {}

    Host& host;
    std::optional<double> heldAt;
    std::vector<Call> calls; // in the order of the calls to `after`

    /// Makes the calls that are due by `limit`. During each call the clock shows the call's due
    /// time.
    void runDue(double limit) {
        for (;;) {
            const auto next = std::ranges::min_element(calls, {}, &Call::due);
            if (next == calls.end() || next->due > limit)
                return;
            const Call call = std::move(*next);
            calls.erase(next);
            heldAt = call.due;
            call.block();
            heldAt.reset();
        }
    }
};

CaptionClock::CaptionClock(Host& host) : state_(std::make_shared<State>(host)) {}

CaptionClock::Hold::Hold(CaptionClock& clock)
    : clock_(clock), isOuter_(!clock.state_->heldAt), time_(clock.now()) {
    if (!isOuter_)
        return;
    clock.state_->runDue(time_);
    clock.state_->heldAt = time_;
}

CaptionClock::Hold::~Hold() {
    if (isOuter_)
        clock_.state_->heldAt.reset();
}

double CaptionClock::now() const {
    return state_->heldAt ? *state_->heldAt : state_->host.now();
}

void CaptionClock::after(double delay, Block block) {
    const double due = now() + delay;
    state_->calls.push_back({due, std::move(block)});
    const double wait = std::max(due - state_->host.now(), 0.0);
    // Because of rounding, this may run slightly before the call is due.
    state_->host.after(wait, [weak = std::weak_ptr(state_), due] {
        if (const auto state = weak.lock(); state && !state->heldAt)
            state->runDue(std::max(due, state->host.now()));
    });
}

} // namespace tessarune
