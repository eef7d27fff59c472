#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"

#include <utility>

namespace tessarune {

void SpeechAnalyzerTranscriber::stop() {
    discardPendingPartial();
    {
        const MutexLock lock(stateLock_);
        state_.lastApplePartialCandidate.reset();
    }
    flushInputAccumulator("stop");
    close(teardownSession());
}

SpeechAnalyzerTranscriber::SessionTeardown SpeechAnalyzerTranscriber::teardownSession() {
    SessionTeardown session;
    const MutexLock lock(stateLock_);
    session.analyzer = std::exchange(state_.analyzer, nullptr);
    session.inputContinuation = std::exchange(state_.inputCont, std::nullopt);
    session.resultsTask = std::exchange(state_.resultsTask, std::nullopt);
    state_.suppressedFinalsUntilAudioTime.reset();
    ++state_.generation;
    return session;
}

void SpeechAnalyzerTranscriber::close(SessionTeardown session) {
    if (session.inputContinuation)
        session.inputContinuation->finish();
    if (session.resultsTask)
        session.resultsTask->cancel();
    if (session.analyzer)
        spawn(mainExecutor(),
              cancelAnalyzer(std::move(session.analyzer), platform_.logger, localeID_));
}

Task<void> SpeechAnalyzerTranscriber::cancelAnalyzer(std::shared_ptr<SpeechAnalyzer> analyzer,
                                                     TessaruneFileLogger& logger,
                                                     std::string locale) {
    try {
        Task<void> cancelling = analyzer->cancelAndFinishNow();
        co_await cancelling;
    } catch (const std::exception& error) {
        LogFields fields;
        fields.add("locale", locale).add("error", std::string(error.what()));
        logger.important("speechAnalyzer.cancelAndFinish.failed", std::move(fields));
    }
}

Task<void> SpeechAnalyzerTranscriber::finishDrainingAndStop() {
    return drainSession(shared_from_this());
}

Task<void> SpeechAnalyzerTranscriber::drainSession(Self self) {
    // The engine's last final will replace the pending partial.
    self->discardPendingPartial();
    self->flushInputAccumulator("finishDraining");
    SessionTeardown session = self->beginDrainSession();
    if (!session.analyzer)
        co_return;

    OneShotAsyncBool drainTimedOut(self->mainExecutor());
    std::stop_source timer;
    spawn(self->mainExecutor(), finishInput(session, drainTimedOut));
    spawn(self->mainExecutor(), limitDrain(self->mainExecutor(), drainTimedOut, timer.get_token()));
    const bool hasTimedOut = co_await drainTimedOut;
    timer.request_stop();
    const std::int64_t generation = session.generation;
    if (hasTimedOut)
        self->abandonDrain(std::move(session));
    self->finishDrainSession(generation);
}

/// Keeps the generation and the results task, so that the remaining results are delivered.
SpeechAnalyzerTranscriber::SessionTeardown SpeechAnalyzerTranscriber::beginDrainSession() {
    SessionTeardown session;
    const MutexLock lock(stateLock_);
    session.analyzer = std::exchange(state_.analyzer, nullptr);
    session.inputContinuation = std::exchange(state_.inputCont, std::nullopt);
    session.resultsTask = state_.resultsTask;
    session.generation = state_.generation;
    return session;
}

Task<void> SpeechAnalyzerTranscriber::finishInput(SessionTeardown session,
                                                  OneShotAsyncBool drainTimedOut) {
    if (session.inputContinuation)
        session.inputContinuation->finish();
    try {
        Task<void> finishing = session.analyzer->finalizeAndFinishThroughEndOfInput();
        co_await finishing;
    } catch (const std::exception&) {
        // The remaining sound is lost; the results task reports the failure if it can.
    }
    if (session.resultsTask) {
        const OneShot<bool> finished = session.resultsTask->finished();
        co_await finished;
    }
    drainTimedOut.resume(false);
}

Task<void> SpeechAnalyzerTranscriber::limitDrain(Executor executor, OneShotAsyncBool drainTimedOut,
                                                 std::stop_token stop) {
    Task<bool> sleeping = sleep(std::move(executor), drainTimeoutSeconds, std::move(stop));
    const bool slept = co_await sleeping;
    if (slept)
        drainTimedOut.resume(true);
}

void SpeechAnalyzerTranscriber::abandonDrain(SessionTeardown session) {
    LogFields fields{{"locale", localeID_}};
    {
        const MutexLock lock(stateLock_);
        if (state_.generation == session.generation)
            ++state_.perf.perfDrainTimeouts;
        fields.add("latestAudioTime", state_.latestAudioTime);
    }
    fields.add("generation", session.generation);
    platform_.logger.important("speechAnalyzer.drain.timeout", std::move(fields));
    session.inputContinuation.reset();
    close(std::move(session));
}

void SpeechAnalyzerTranscriber::finishDrainSession(std::int64_t generation) {
    const MutexLock lock(stateLock_);
    if (state_.generation != generation)
        return;
    ++state_.generation;
    state_.resultsTask.reset();
    state_.lastApplePartialCandidate.reset();
    state_.suppressedFinalsUntilAudioTime.reset();
}

} // namespace tessarune
