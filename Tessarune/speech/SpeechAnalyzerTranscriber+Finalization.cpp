#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

/// Returns the error text if the operation fails, `nullopt` otherwise.
Task<std::optional<std::string>> failureOf(Task<void> operation) {
    std::optional<std::string> failure;
    try {
        co_await operation;
    } catch (const std::exception& error) {
        failure = error.what();
    }
    co_return failure;
}

template <typename Plan>
LogFields fieldsOf(const Plan& plan, const std::string& locale, const std::string& reason) {
    return {{"locale", locale},
            {"reason", reason},
            {"audioCutoff", plan.cutoff},
            {"generation", plan.generation}};
}

} // namespace

void SpeechAnalyzerTranscriber::requestFinalization(std::string reason) {
    auto plan = makeFinalizationPlan();
    if (!plan)
        return;
    platform_.logger.event("speechAnalyzer.finalize.request",
                           {{"locale", localeID_},
                            {"reason", reason},
                            {"audioCutoff", plan->cutoff},
                            {"latestAudioTime", plan->latestAudioTime},
                            {"generation", plan->generation}});
    spawn(mainExecutor(), finalizeThrough(weak_from_this(), std::move(*plan), std::move(reason)));
}

/// A plan counts against the rate limit even if the engine ignores the request.
std::optional<SpeechAnalyzerTranscriber::FinalizationPlan>
SpeechAnalyzerTranscriber::makeFinalizationPlan() {
    const double time = now();
    const MutexLock lock(stateLock_);
    if (!state_.analyzer || !state_.inputCont || !(state_.audioEpoch > 0))
        return std::nullopt;
    const double cutoff = std::max(state_.latestAudioTime - finalizeSafetyTailSeconds, 0.0);
    if (!(cutoff > finalizeMinCutoffSeconds))
        return std::nullopt;
    if (cutoff - state_.lastFinalizeRequestAudioTime < finalizeMinAudioStepSeconds &&
        time - state_.lastFinalizeRequestWallTime < finalizeMinWallStepSeconds)
        return std::nullopt;
    state_.lastFinalizeRequestAudioTime = cutoff;
    state_.lastFinalizeRequestWallTime = time;
    return FinalizationPlan{state_.analyzer, cutoff, state_.latestAudioTime, state_.generation};
}

Task<void> SpeechAnalyzerTranscriber::finalizeThrough(WeakSelf weak, FinalizationPlan plan,
                                                      std::string reason) {
    Task<std::optional<std::string>> finalizing = failureOf(plan.analyzer->finalize(plan.cutoff));
    const std::optional<std::string> failure = co_await finalizing;
    const Self self = weak.lock();
    if (!self)
        co_return;
    LogFields fields = fieldsOf(plan, self->localeID_, reason);
    if (failure) {
        self->platform_.logger.important("speechAnalyzer.finalize.failed",
                                         fields.add("error", *failure));
        co_return;
    }
    if (!self->isCurrent(plan.generation))
        co_return;
    self->platform_.logger.event("speechAnalyzer.finalize.done", fields);
    self->requestAnalysisCancellation(plan.cutoff, "finalize." + reason);
}

void SpeechAnalyzerTranscriber::requestAnalysisCancellation(double beforeAudioTime,
                                                            const std::string& reason) {
    auto plan = makeCancellationPlan(beforeAudioTime);
    if (!plan)
        return;
    platform_.logger.event("speechAnalyzer.cancel.request",
                           {{"locale", localeID_},
                            {"reason", reason},
                            {"audioCutoff", plan->cutoff},
                            {"sourceAudioTime", plan->sourceAudioTime},
                            {"latestAudioTime", plan->latestAudioTime},
                            {"generation", plan->generation}});
    spawn(mainExecutor(), cancelBefore(weak_from_this(), std::move(*plan), reason));
}

std::optional<SpeechAnalyzerTranscriber::CancellationPlan>
SpeechAnalyzerTranscriber::makeCancellationPlan(double beforeAudioTime) {
    const MutexLock lock(stateLock_);
    if (!state_.analyzer || !state_.inputCont || !std::isfinite(beforeAudioTime))
        return std::nullopt;
    const double cutoff = std::max(beforeAudioTime - cancelSafetyTailSeconds, 0.0);
    if (!(cutoff > cancelMinCutoffSeconds))
        return std::nullopt;
    const double step = cutoff - state_.lastCancelRequestAudioTime;
    if (step < cancelMinAudioStepSeconds)
        return std::nullopt;
    state_.lastCancelRequestAudioTime = cutoff;
    ++state_.perf.perfCancelRequests;
    state_.perf.perfCanceledAudioSeconds += step;
    return CancellationPlan{state_.analyzer, cutoff, beforeAudioTime, state_.latestAudioTime,
                            state_.generation};
}

Task<void> SpeechAnalyzerTranscriber::cancelBefore(WeakSelf weak, CancellationPlan plan,
                                                   std::string reason) {
    Task<std::optional<std::string>> cancelling =
        failureOf(plan.analyzer->cancelAnalysis(plan.cutoff));
    const std::optional<std::string> failure = co_await cancelling;
    const Self self = weak.lock();
    if (!self)
        co_return;
    LogFields fields = fieldsOf(plan, self->localeID_, reason);
    if (failure) {
        self->platform_.logger.important("speechAnalyzer.cancel.failed",
                                         fields.add("error", *failure));
        co_return;
    }
    {
        const MutexLock lock(self->stateLock_);
        if (self->state_.generation != plan.generation)
            co_return;
        ++self->state_.perf.perfCancelDone;
    }
    self->platform_.logger.event("speechAnalyzer.cancel.done", fields);
}

} // namespace tessarune
