#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"

#include "Tessarune/speech/SpeechAnalyzerAssets.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <stdexcept>
#include <utility>

namespace tessarune {

std::shared_ptr<SpeechAnalyzerTranscriber>
SpeechAnalyzerTranscriber::make(std::string localeIdentifier, SpeechPlatform platform) {
    return std::shared_ptr<SpeechAnalyzerTranscriber>(
        new SpeechAnalyzerTranscriber(std::move(localeIdentifier), std::move(platform)));
}

SpeechAnalyzerTranscriber::SpeechAnalyzerTranscriber(std::string localeIdentifier,
                                                     SpeechPlatform platform)
    : localeID_(std::move(localeIdentifier)),
      platform_(std::move(platform)),
      resultsExecutor_(Executor::queue(
          platform_.host, platform_.host.serialQueue("Tessarune.SpeechAnalyzerTranscriber.results",
                                                     QueuePriority::userInitiated))) {}

SpeechAnalyzerTranscriber::~SpeechAnalyzerTranscriber() {
    discardPendingPartial();
    close(teardownSession());
}

Task<void> SpeechAnalyzerTranscriber::start(std::string) {
    return startSession(shared_from_this());
}

Task<void> SpeechAnalyzerTranscriber::startSession(Self self) {
    Task<void> installing = installAssetsIfNeeded(self->platform_.assets, self->platform_.logger,
                                                  self->localeID_, "start");
    co_await installing;

    NewSession session = self->beginSession();
    std::exception_ptr failure;
    try {
        Task<void> running = runSession(self, session);
        co_await running;
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        // A later generation has stopped this session already, and may run.
        if (self->isCurrent(session.generation))
            self->stop();
        std::rethrow_exception(failure);
    }
    TessaruneLog::asr.notice(
        [&] { return "The speech analyzer has started for " + self->localeID_ + "."; });
}

Task<void> SpeechAnalyzerTranscriber::runSession(Self self, NewSession session) {
    Task<void> preparing = session.analyzer->prepareToAnalyze(session.format);
    co_await preparing;
    if (!self->startReadingResults(session))
        throw std::runtime_error("Recognition was stopped during the start.");
    Task<void> starting = session.analyzer->start(session.input);
    co_await starting;
    if (!self->isCurrent(session.generation))
        throw std::runtime_error("Recognition was stopped during the start.");
}

SpeechTranscriberOptions
SpeechAnalyzerTranscriber::requestedOptions(std::vector<std::string>& strings) const {
    SpeechTranscriberOptions options;
    options.localeIdentifier = localeID_;
    const auto report = [&](SpeechReportingOption option, const char* name) {
        options.reporting.insert(option);
        strings.push_back(std::string("reporting.") + name);
    };
    const auto annotate = [&](SpeechAttributeOption option, const char* name) {
        options.attributes.insert(option);
        strings.push_back(std::string("attribute.") + name);
    };
    report(SpeechReportingOption::volatileResults, "volatileResults");
    report(SpeechReportingOption::fastResults, "fastResults");
    if (onRawResult)
        report(SpeechReportingOption::alternativeTranscriptions, "alternativeTranscriptions");
    annotate(SpeechAttributeOption::audioTimeRange, "audioTimeRange");
    if (onRawResult || onSummaryResult)
        annotate(SpeechAttributeOption::transcriptionConfidence, "transcriptionConfidence");
    return options;
}

SpeechAnalyzerTranscriber::NewSession SpeechAnalyzerTranscriber::beginSession() {
    std::vector<std::string> optionStrings;
    const auto options = requestedOptions(optionStrings);
    const auto transcriber = platform_.engine.makeTranscriber(options, resultsExecutor_);
    const auto analyzer = platform_.engine.makeAnalyzer(transcriber);
    const AudioFormat format = analyzer->bestAvailableAudioFormat();
    const InputContinuation input(analyzer->inputExecutor());
    {
        const MutexLock lock(inputLock_);
        inputAccumulator_.reset();
    }
    {
        const MutexLock lock(converterLock_);
        converter_.reset();
        converterInput_.reset();
    }
    State fresh;
    fresh.analyzer = analyzer;
    fresh.transcriber = transcriber;
    fresh.inputCont = input;
    fresh.analyzerFormat = format;
    fresh.segmentStart = now();
    fresh.requestedSpeechOptionStrings = std::move(optionStrings);
    const MutexLock lock(stateLock_);
    fresh.generation = state_.generation + 1;
    std::swap(state_, fresh);
    return {analyzer, transcriber, input, format, state_.generation};
}

bool SpeechAnalyzerTranscriber::startReadingResults(const NewSession& session) {
    std::stop_source stop;
    TaskHandle task = spawn(resultsExecutor_,
                            readResults(weak_from_this(), session.transcriber->results(),
                                        session.generation, stop.get_token()),
                            stop);
    {
        const MutexLock lock(stateLock_);
        if (state_.generation == session.generation) {
            state_.resultsTask = task;
            return true;
        }
    }
    task.cancel();
    return false;
}

void SpeechAnalyzerTranscriber::reset() {
    const double start = now();
    const MutexLock lock(stateLock_);
    state_.segmentStart = start;
    state_.revision = 0;
    state_.lastApplePartialCandidate.reset();
    state_.suppressedFinalsUntilAudioTime.reset();
}

PerfStats SpeechAnalyzerTranscriber::perfStats() const {
    SpeechAnalyzerPerfCounters perf;
    std::optional<InputContinuation> input;
    {
        const MutexLock lock(stateLock_);
        perf = state_.perf;
        input = state_.inputCont;
    }
    PerfStats stats = perf.stats();
    // The engine's delay: the queued batches and the sound that it has taken but not processed.
    double behind = 0;
    if (input && perf.perfAnalyzerInputBatches > 0) {
        const double secondsPerBatch =
            perf.perfConvertedAudioSeconds / perf.perfAnalyzerInputBatches;
        behind = static_cast<double>(input->queuedCount()) * secondsPerBatch +
                 platform_.engine.unheardSeconds();
    }
    stats["secondsBehind"] = behind;
    return stats;
}

bool SpeechAnalyzerTranscriber::isCurrent(std::int64_t generation) const {
    const MutexLock lock(stateLock_);
    return state_.generation == generation;
}

} // namespace tessarune
