#include "Tessarune/platform/speech-engine/MoonshineSpeechAnalyzer.h"

#include "TessaruneCore/host/RunOn.h"

#include <exception>
#include <stdexcept>

namespace tessarune {

namespace {

using Session = std::shared_ptr<RecognitionSession>;

/// Runs `work` on the worker queue and resumes on the main queue when it is done. This is a
/// separate coroutine so that the session stays alive until then, even if the analyzer is
/// destroyed.
Task<void> onWorker(Executor worker, Session session, void (RecognitionSession::*work)()) {
    co_await runOn(std::move(worker), [&] { (*session.*work)(); });
}

/// Feeds the input to the session until the input ends; runs on the worker queue.
Task<void> readInput(Session session, AsyncStream<AnalyzerInput> input, std::stop_token stop) {
    try {
        for (;;) {
            Task<std::optional<AnalyzerInput>> arrival = input.next(stop);
            const std::optional<AnalyzerInput> next = co_await arrival;
            if (!next)
                break;
            if (next->buffer)
                session->take(*next->buffer);
        }
    } catch (...) {
        session->fail(std::current_exception());
    }
}

Task<void> finishAfter(std::optional<TaskHandle> reading, Session session, Executor worker) {
    if (reading) {
        OneShot<bool> readAll = reading->finished();
        co_await readAll;
    }
    co_await onWorker(std::move(worker), std::move(session), &RecognitionSession::finish);
}

} // namespace

MoonshineSpeechAnalyzer::MoonshineSpeechAnalyzer(Host& host, Executor worker,
                                                 std::shared_ptr<SpeechModels> models,
                                                 const MoonshineSpeechTranscriber& transcriber,
                                                 AsyncStream<SpeechResult> results,
                                                 RecognitionPolicy policy,
                                                 std::shared_ptr<RecognitionBacklog> backlog)
    : worker_(std::move(worker)),
      main_(Executor::main(host)),
      session_(std::make_shared<RecognitionSession>(host, worker_, std::move(models),
                                                    transcriber.options(), std::move(results),
                                                    policy, std::move(backlog))) {}

MoonshineSpeechAnalyzer::~MoonshineSpeechAnalyzer() {
    abandon();
}

void MoonshineSpeechAnalyzer::abandon() {
    session_->end();
    stopReading_.request_stop();
    worker_.run([session = session_] { session->release(); });
}

Task<void> MoonshineSpeechAnalyzer::prepareToAnalyze(AudioFormat format) {
    if (format != bestAvailableAudioFormat())
        throw std::invalid_argument("The speech engine takes 16 kHz, one channel.");
    return onWorker(worker_, session_, &RecognitionSession::prepare);
}

Task<void> MoonshineSpeechAnalyzer::start(AsyncStream<AnalyzerInput> inputSequence) {
    co_await onWorker(worker_, session_, &RecognitionSession::begin);
    Task<void> reading = readInput(session_, std::move(inputSequence), stopReading_.get_token());
    reading_ = spawn(worker_, std::move(reading), stopReading_);
}

Task<void> MoonshineSpeechAnalyzer::finalize(double through) {
    const OneShot<bool> decided(main_);
    worker_.run([session = session_, through, decided] { session->closeLine(through, decided); });
    co_await decided;
    co_await switchTo(main_); // the await does not switch queues if the decision came first
}

Task<void> MoonshineSpeechAnalyzer::cancelAnalysis(double) {
    return onWorker(worker_, session_, &RecognitionSession::forgetOldLines);
}

Task<void> MoonshineSpeechAnalyzer::finalizeAndFinishThroughEndOfInput() {
    return finishAfter(reading_, session_, worker_);
}

Task<void> MoonshineSpeechAnalyzer::cancelAndFinishNow() {
    abandon();
    co_await switchTo(main_);
}

} // namespace tessarune
