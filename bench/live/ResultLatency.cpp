#include "bench/live/ResultLatency.h"

#include "TessaruneCore/text/Text.h"

#include <memory>
#include <utility>

namespace tessarune {

namespace {

/// Forwards the results of the engine's transcriber.
class RelayedTranscriber final : public SpeechTranscriber {
  public:
    RelayedTranscriber(std::shared_ptr<SpeechTranscriber> engineTranscriber,
                       Executor resultsExecutor)
        : inner(std::move(engineTranscriber)), results_(std::move(resultsExecutor)) {}

    AsyncStream<SpeechResult> results() override { return results_; }

    const std::shared_ptr<SpeechTranscriber> inner; ///< the engine's transcriber

  private:
    AsyncStream<SpeechResult> results_;
};

} // namespace

ResultLatency::ResultLatency(Host& host)
    : host_(host),
      relayExecutor_(
          Executor::queue(host, host.serialQueue("bench.results", QueuePriority::userInitiated))) {}

SpeechEngine ResultLatency::watching(SpeechEngine engine) {
    SpeechEngine watched;
    watched.makeTranscriber = [this, make = engine.makeTranscriber](
                                  SpeechTranscriberOptions options, Executor resultsExecutor) {
        auto inner = make(std::move(options), relayExecutor_);
        auto relayed = std::make_shared<RelayedTranscriber>(inner, std::move(resultsExecutor));
        spawn(relayExecutor_, relay(*this, inner->results(), relayed->results()));
        return relayed;
    };
    watched.makeAnalyzer =
        [make = engine.makeAnalyzer](std::shared_ptr<SpeechTranscriber> transcriber) {
            return make(dynamic_cast<RelayedTranscriber&>(*transcriber).inner);
        };
    return watched;
}

Task<void> ResultLatency::relay(ResultLatency& latency, AsyncStream<SpeechResult> from,
                                AsyncStream<SpeechResult> to) {
    try {
        for (;;) {
            Task<std::optional<SpeechResult>> arriving = from.next();
            std::optional<SpeechResult> result = co_await arriving;
            if (!result)
                break;
            latency.note(*result);
            to.yield(std::move(*result));
        }
        to.finish();
    } catch (...) {
        to.fail(std::current_exception());
    }
}

void ResultLatency::note(const SpeechResult& result) {
    const std::string text = result.text();
    Result noted{std::string(Text::trimmed(text)), result.isFinal, host_.now(), 0};
    std::lock_guard lock(mutex_);
    underWay_.push_back(std::move(noted));
}

/// The number of results under way that the event covers. A partial covers all results up to the
/// newest guess with its text. A final covers all results up to the oldest final, whose text may
/// differ from that of the event.
std::size_t ResultLatency::countCovered(const ASREvent& event) const {
    const auto* partial = std::get_if<ASREvent::Partial>(&event.value);
    std::size_t covered = 0;
    for (std::size_t i = 0; i < underWay_.size(); ++i) {
        const Result& result = underWay_[i];
        if (result.isFinal) {
            // If the program dropped a final, the events of later guesses cover it.
            if (!partial)
                return i + 1;
        } else if (partial && result.text == partial->text) {
            covered = i + 1;
        }
    }
    return covered;
}

void ResultLatency::eventArrived(const ASREvent& event) {
    const double now = host_.now();
    std::lock_guard lock(mutex_);
    for (std::size_t left = countCovered(event); left > 0; --left) {
        arrived_.push_back(std::move(underWay_.front()));
        arrived_.back().arrivedAt = now;
        underWay_.pop_front();
    }
}

void ResultLatency::coreChanged(double at) {
    for (const Result& result : std::exchange(arrived_, {})) {
        Times& times = result.isFinal ? finals : guesses;
        times.toEvent.push_back(result.arrivedAt - result.deliveredAt);
        times.toChange.push_back(at - result.arrivedAt);
        times.total.push_back(at - result.deliveredAt);
    }
}

} // namespace tessarune
