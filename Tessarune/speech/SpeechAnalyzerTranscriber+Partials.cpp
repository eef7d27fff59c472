#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"

#include <utility>

namespace tessarune {

void SpeechAnalyzerTranscriber::queuePartial(std::string text, double timestamp,
                                             std::int64_t generation) {
    bool replaced = false;
    {
        const MutexLock lock(partialLock_);
        replaced = pendingPartialText_.has_value();
        pendingPartialText_ = std::move(text);
        pendingPartialTimestamp_ = timestamp;
        if (!partialEmitTask_) {
            std::stop_source stop;
            partialEmitTask_ =
                spawn(resultsExecutor_,
                      emitPartialLater(weak_from_this(), resultsExecutor_,
                                       partialCoalesceGeneration_, generation, stop.get_token()),
                      stop);
        }
    }
    const MutexLock lock(stateLock_);
    if (replaced)
        ++state_.perf.perfCoalescedPartialResults;
    ++state_.perf.perfRawPartialResults;
}

Task<void> SpeechAnalyzerTranscriber::emitPartialLater(WeakSelf weak, Executor executor,
                                                       std::int64_t coalesceGeneration,
                                                       std::int64_t generation,
                                                       std::stop_token stop) {
    Task<bool> sleeping = sleep(std::move(executor), partialCoalesceWindowSeconds, std::move(stop));
    const bool slept = co_await sleeping;
    if (!slept)
        co_return;
    if (const Self self = weak.lock())
        self->flushPendingPartial(coalesceGeneration, generation);
}

void SpeechAnalyzerTranscriber::flushPendingPartial(std::int64_t coalesceGeneration,
                                                    std::int64_t generation) {
    std::optional<std::string> text;
    double timestamp = 0;
    {
        const MutexLock lock(partialLock_);
        if (partialCoalesceGeneration_ != coalesceGeneration)
            return;
        text = std::exchange(pendingPartialText_, std::nullopt);
        timestamp = pendingPartialTimestamp_;
        partialEmitTask_.reset();
    }
    if (!text)
        return;
    std::int64_t revision = 0;
    {
        const MutexLock lock(stateLock_);
        if (state_.generation != generation)
            return;
        revision = state_.revision;
    }
    send(onEvent, ASREvent::partial(std::move(*text), revision, timestamp));
    const MutexLock lock(stateLock_);
    ++state_.perf.perfPartialEvents;
}

void SpeechAnalyzerTranscriber::discardPendingPartial() {
    std::optional<TaskHandle> task;
    {
        const MutexLock lock(partialLock_);
        ++partialCoalesceGeneration_;
        pendingPartialText_.reset();
        task = std::exchange(partialEmitTask_, std::nullopt);
    }
    if (task)
        task->cancel();
}

bool SpeechAnalyzerTranscriber::hasPendingPartial() const {
    const MutexLock lock(partialLock_);
    return pendingPartialText_.has_value();
}

} // namespace tessarune
