#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/recognition/ASREvent.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace tessarune {

/// Measures how long results of a recogniser take to reach the captions. A guess that a later guess
/// replaces on the way counts as arrived when the later guess arrives.
///
/// Results are noted on a separate queue; everything else happens on the main queue. The host and
/// this object must outlive the watched engines.
class ResultLatency {
  public:
    explicit ResultLatency(Host& host);

    /// Returns an engine that works like `engine`, and whose results are noted at their delivery.
    SpeechEngine watching(SpeechEngine engine);

    /// Call when an event has reached the main queue, before the core processes it.
    void eventArrived(const ASREvent& event);
    /// Call when the core has changed the captions because of the last event, at the time `at`.
    void coreChanged(double at);

    /// Times in seconds, one for each result that arrived.
    struct Times {
        std::vector<double> toEvent;  ///< from the result to its event on the main queue
        std::vector<double> toChange; ///< from that event to the core's change
        std::vector<double> total;    ///< from the result to the core's change
    };
    Times guesses;
    Times finals;

  private:
    struct Result {
        std::string text;
        bool isFinal = false;
        double deliveredAt = 0; ///< when the engine delivered it
        double arrivedAt = 0;   ///< when its event reached the main queue
    };

    static Task<void> relay(ResultLatency& latency, AsyncStream<SpeechResult> from,
                            AsyncStream<SpeechResult> to);
    void note(const SpeechResult& result);
    std::size_t countCovered(const ASREvent& event) const;

    Host& host_;
    const Executor relayExecutor_;
    std::mutex mutex_;
    std::deque<Result> underWay_; ///< guarded by `mutex_`
    std::vector<Result> arrived_; ///< results whose event the core is still processing
};

} // namespace tessarune
