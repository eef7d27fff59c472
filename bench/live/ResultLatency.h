#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/recognition/ASREvent.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace tessarune {

/// How long results of a recogniser are on their way to the captions. A guess that a later one
/// replaced on the way has arrived when that one has.
///
/// Results are noted on a queue of its own, the rest on the main queue. The host and this object
/// outlive the engines that are watched.
class ResultLatency {
  public:
    explicit ResultLatency(Host& host);

    /// The same engine, with its results noted as they come out.
    SpeechEngine watching(SpeechEngine engine);

    /// An event has reached the main queue, and the core takes it next.
    void eventArrived(const ASREvent& event);
    /// The core has done something with the last event, at that moment.
    void coreChanged(double at);

    /// In seconds, one for each result that arrived.
    struct Times {
        std::vector<double> toEvent;  ///< from the result to its event on the main queue
        std::vector<double> toChange; ///< from there to the change of the core
        std::vector<double> whole;
    };
    Times guesses;
    Times finals;

  private:
    struct Result {
        std::string text;
        bool isFinal = false;
        double cameAt = 0;
        double arrivedAt = 0;
    };

    static Task<void> relay(ResultLatency& latency, AsyncStream<SpeechResult> from,
                            AsyncStream<SpeechResult> to);
    void note(const SpeechResult& result);
    std::size_t countCovered(const ASREvent& event) const;

    Host& host_;
    const Executor relayExecutor_;
    std::mutex mutex_;
    std::deque<Result> underWay_; ///< guarded by `mutex_`
    std::vector<Result> arrived_; ///< in an event that the core has got
};

} // namespace tessarune
