#include "Tessarune/speech/AppleFinalReconciler.h"
#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace tessarune {

namespace {

constexpr double markPassedByPartialSeconds = 0.25;
constexpr double markToleranceSeconds = 0.12;

bool isFinite(const std::optional<double>& value) {
    return value && std::isfinite(*value);
}

} // namespace

Task<void> SpeechAnalyzerTranscriber::readResults(WeakSelf weak, AsyncStream<SpeechResult> results,
                                                  std::int64_t generation, std::stop_token stop) {
    try {
        for (;;) {
            Task<std::optional<SpeechResult>> arriving = results.next(stop);
            const std::optional<SpeechResult> result = co_await arriving;
            const Self self = weak.lock();
            if (!result || !self || !self->isCurrent(generation))
                break;
            self->handleResult(*result, generation);
        }
    } catch (const std::exception& error) {
        const Self self = weak.lock();
        if (self && self->isCurrent(generation))
            send(self->onError, error);
    }
}

void SpeechAnalyzerTranscriber::handleResult(const SpeechResult& result, std::int64_t generation) {
    const double receivedAt = now();
    const std::string whole = result.text();
    const std::string text(Text::trimmed(whole));
    if (text.empty() && !result.isFinal)
        return;
    AnalyzerEngineSnapshot snapshot;
    std::int64_t sequence = 0;
    {
        const MutexLock lock(stateLock_);
        if (state_.generation != generation)
            return;
        sequence = ++state_.rawResultSequence;
        snapshot = {generation,          state_.audioEpoch, state_.latestAudioTime,
                    state_.segmentStart, state_.revision,   state_.requestedSpeechOptionStrings,
                    state_.timeline};
    }
    const IncomingResult incoming{
        result, AppleResultMapping::candidate(result, text, sequence, receivedAt, snapshot),
        snapshot};
    sendDiagnostics(incoming);
    if (result.isFinal) {
        handleFinal(incoming);
    } else {
        handlePartial(incoming);
    }
}

void SpeechAnalyzerTranscriber::sendDiagnostics(const IncomingResult& incoming) {
    if (!onSummaryResult && !onRawResult)
        return;
    const AppleResultMapping::RecordContext context{
        localeID_, incoming.snapshot, hasPendingPartial(), partialCoalesceWindowSeconds,
        analyzerInputChunkSeconds};
    if (onSummaryResult) {
        const double before = now();
        send(onSummaryResult,
             AppleResultMapping::summaryRecord(incoming.result, incoming.candidate, context));
        const double busy = now() - before;
        const MutexLock lock(stateLock_);
        ++state_.perf.perfAppleSummaryResults;
        state_.perf.perfAppleSummaryBusySeconds += busy;
    }
    if (onRawResult) {
        const double before = now();
        send(onRawResult,
             AppleResultMapping::rawResultRecord(incoming.result, incoming.candidate, context));
        const double busy = now() - before;
        const MutexLock lock(stateLock_);
        ++state_.perf.perfAppleFullRawResults;
        state_.perf.perfAppleFullRawBusySeconds += busy;
    }
}

void SpeechAnalyzerTranscriber::handlePartial(const IncomingResult& incoming) {
    const auto& candidate = incoming.candidate;
    {
        const MutexLock lock(stateLock_);
        if (state_.generation != incoming.snapshot.generation)
            return;
        auto& mark = state_.suppressedFinalsUntilAudioTime;
        if (mark && isFinite(candidate.audioEndSeconds) &&
            *mark + markPassedByPartialSeconds < *candidate.audioEndSeconds)
            mark.reset();
        state_.lastApplePartialCandidate = candidate;
        ++state_.revision;
    }
    queuePartial(candidate.text,
                 incoming.snapshot.wallTime(candidate.audioStartSeconds)
                     .value_or(incoming.snapshot.segmentStart),
                 incoming.snapshot.generation);
}

void SpeechAnalyzerTranscriber::handleFinal(const IncomingResult& incoming) {
    std::optional<AppleFinalReconcileCandidate> lastPartial;
    std::optional<double> mark;
    {
        const MutexLock lock(stateLock_);
        if (state_.generation != incoming.snapshot.generation)
            return;
        lastPartial = state_.lastApplePartialCandidate;
        mark = state_.suppressedFinalsUntilAudioTime;
    }
    const auto outcome = AppleFinalReconciler::reconcile(incoming.candidate, lastPartial, mark);
    send(onReconcileDecision, outcome.record);
    std::string text(Text::trimmed(outcome.text));
    {
        const MutexLock lock(stateLock_);
        if (state_.generation != incoming.snapshot.generation)
            return;
        applyDecision(outcome.record);
        if (text.empty())
            state_.lastApplePartialCandidate.reset();
    }
    if (text.empty()) {
        // Only a final without text withdraws the partial; a dropped final that has text does not.
        if (lastPartial && incoming.candidate.text.empty())
            withdrawGuess();
        return;
    }
    // A pending partial must not arrive after its final.
    discardPendingPartial();
    emitFinal(incoming, outcome, std::move(text));
}

void SpeechAnalyzerTranscriber::withdrawGuess() {
    discardPendingPartial();
    SoleLock::assertNoneHeld();
    if (onGuessWithdrawn)
        onGuessWithdrawn();
}

/// Counts the decision, and updates the audio time until which finals are suppressed.
void SpeechAnalyzerTranscriber::applyDecision(const AppleFinalReconcileDecisionRecord& record) {
    using Decision = AppleFinalReconcileDecisionRecord::Decision;
    auto& mark = state_.suppressedFinalsUntilAudioTime;
    const auto& end = record.final.audioEndSeconds;
    switch (record.decision) {
    case Decision::useFinal:
        ++state_.perf.perfAppleReconcileUseFinal;
        if (mark && isFinite(end) && *mark + markToleranceSeconds < *end)
            mark.reset();
        break;
    case Decision::useLastPartial:
        ++state_.perf.perfAppleReconcileUseLastPartial;
        mark = record.suppressedFinalsUntilAudioTime;
        break;
    case Decision::dropSuppressedFinal:
        ++state_.perf.perfAppleReconcileDropSuppressed;
        // The mark is the end of the partial that was used instead of the finals. If this final
        // reaches the mark, the next final is about later sound.
        if (mark && isFinite(end) && *mark - markToleranceSeconds <= *end)
            mark.reset();
        break;
    }
}

void SpeechAnalyzerTranscriber::emitFinal(const IncomingResult& incoming,
                                          const AppleFinalReconcileOutcome& outcome,
                                          std::string text) {
    AppleResultMapping::TimingInfo timing = timingInfo(incoming);
    const auto& snapshot = incoming.snapshot;
    const auto wallTime = [&](std::optional<double> chosen, std::optional<double> timed,
                              double fallback) {
        if (isFinite(chosen) && snapshot.audioEpoch > 0)
            return snapshot.wallTimeOf(*chosen);
        return timed ? snapshot.wallTimeOf(*timed) : fallback;
    };
    std::optional<double> spanStart, spanEnd;
    if (timing.span)
        std::tie(spanStart, spanEnd) = *timing.span;
    const double start =
        wallTime(outcome.selectedAudioStartSeconds, spanStart, snapshot.segmentStart);
    const double end = wallTime(outcome.selectedAudioEndSeconds, spanEnd, now());
    {
        const MutexLock lock(stateLock_);
        ++state_.perf.perfFinalEvents;
        state_.perf.perfFinalCharacters += static_cast<double>(Text::length(text));
    }
    if (!outcome.shouldKeepFinalWordTimings)
        timing.words.reset();
    send(onEvent, ASREvent::final(std::move(text), start, end, EndpointReason::engineFinal,
                                  std::move(timing.words)));

    if (const auto heardUntil =
            outcome.selectedAudioEndSeconds ? outcome.selectedAudioEndSeconds : spanEnd)
        requestAnalysisCancellation(*heardUntil, "engineFinal");
    const MutexLock lock(stateLock_);
    if (state_.generation != snapshot.generation)
        return;
    state_.segmentStart = std::max(state_.segmentStart, end);
    state_.revision = 0;
    state_.lastApplePartialCandidate.reset();
}

AppleResultMapping::TimingInfo
SpeechAnalyzerTranscriber::timingInfo(const IncomingResult& incoming) {
    const double before = now();
    auto timing = AppleResultMapping::timingInfo(incoming.result.runs, incoming.snapshot);
    const double busy = now() - before;
    const MutexLock lock(stateLock_);
    state_.perf.perfTimingBusySeconds += busy;
    state_.perf.perfTimingRuns += static_cast<double>(incoming.result.runs.size());
    state_.perf.perfTimedRuns += static_cast<double>(timing.timedRunCount);
    state_.perf.perfTimedWords += static_cast<double>(timing.words ? timing.words->size() : 0);
    return timing;
}

} // namespace tessarune
