#include "bench/live/EngineAlone.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

/// The length of a batch in `SpeechAnalyzerTranscriber`.
constexpr double batchSeconds = 0.085;

std::vector<AudioBufferPtr> batches(const std::filesystem::path& path, AudioFormat format) {
    AudioBuffer all{format, {}};
    const auto file = openFFmpegMediaFile(path);
    const auto converter = makeSwresampleConverter(file->format(), format);
    while (const AudioBufferPtr block = file->read()) {
        const AudioBuffer converted = converter->convert(*block);
        all.samples.insert(all.samples.end(), converted.samples.begin(), converted.samples.end());
    }
    const auto step = static_cast<std::size_t>(format.sampleRate * batchSeconds);
    std::vector<AudioBufferPtr> result;
    for (std::size_t at = 0; at < all.samples.size(); at += step) {
        const auto begin = all.samples.begin() + static_cast<std::ptrdiff_t>(at);
        const auto count = static_cast<std::ptrdiff_t>(std::min(step, all.samples.size() - at));
        result.push_back(std::make_shared<const AudioBuffer>(
            AudioBuffer{format, std::vector<float>(begin, begin + count)}));
    }
    return result;
}

Task<void> readResults(AsyncStream<SpeechResult> results,
                       std::function<void(const SpeechResult&)> onResult) {
    try {
        for (;;) {
            Task<std::optional<SpeechResult>> arriving = results.next();
            const std::optional<SpeechResult> result = co_await arriving;
            if (!result)
                co_return;
            onResult(*result);
        }
    } catch (const std::exception&) {
        // The call that waits for the end of the analysis reports the failure.
    }
}

} // namespace

Task<void> runEngineAlone(Host& host, SpeechEngine engine, std::filesystem::path file,
                          std::function<void()> onListening,
                          std::function<void(const SpeechResult&)> onResult) {
    const Executor main = Executor::main(host);
    const Executor resultsExecutor =
        Executor::queue(host, host.serialQueue("bench.results", QueuePriority::userInitiated));
    SpeechTranscriberOptions options;
    options.localeIdentifier = "en-US";
    options.reporting = {SpeechReportingOption::volatileResults,
                         SpeechReportingOption::fastResults};
    options.attributes = {SpeechAttributeOption::audioTimeRange};
    const auto transcriber = engine.makeTranscriber(options, resultsExecutor);
    const auto analyzer = engine.makeAnalyzer(transcriber);
    const AudioFormat format = analyzer->bestAvailableAudioFormat();
    const std::vector<AudioBufferPtr> sound = batches(file, format);
    Task<void> preparing = analyzer->prepareToAnalyze(format);
    co_await preparing;
    spawn(resultsExecutor, readResults(transcriber->results(), std::move(onResult)));
    const AsyncStream<AnalyzerInput> input(analyzer->inputExecutor());
    Task<void> starting = analyzer->start(input);
    co_await starting;

    onListening();
    const double startedAt = host.now();
    double given = 0;
    for (const AudioBufferPtr& batch : sound) {
        given += batch->seconds();
        Task<bool> waiting = sleep(main, std::max(startedAt + given - host.now(), 0.0));
        co_await waiting;
        input.yield(AnalyzerInput{batch});
    }
    input.finish();
    Task<void> finishing = analyzer->finalizeAndFinishThroughEndOfInput();
    co_await finishing;
}

} // namespace tessarune
