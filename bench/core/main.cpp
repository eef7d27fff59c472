#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "bench/replay/HourLog.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// Measures each step of processing a partial, to show which step a change of the core made slower.
/// The first argument of a benchmark is the language: 0 English, 1 Chinese.

namespace tessarune {
namespace {

constexpr std::size_t utterances = 2 * HourLog::repeatedUtterances;

const std::vector<ASREventRecord>& records(std::int64_t language) {
    static const auto english = HourLog::make(HourLog::Language::english, utterances);
    static const auto chinese = HourLog::make(HourLog::Language::chinese, utterances);
    return language == 0 ? english : chinese;
}

EngineCapabilities capabilities(std::int64_t language) {
    EngineCapabilities caps;
    caps.punctuatesNatively = true;
    return caps.localized(language == 0 ? "en-US" : "zh-CN");
}

/// Calls `work` with one record after the other, and counts the calls.
template <typename Work>
void forEachRecord(benchmark::State& state, Work work) {
    const auto& all = records(state.range(0));
    std::size_t next = 0;
    for (auto _ : state) {
        work(all[next]);
        next = next + 1 == all.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

std::vector<std::string> lines(std::int64_t language) {
    std::vector<std::string> result;
    for (const ASREventRecord& record : records(language))
        result.push_back(*record.line());
    return result;
}

/// Calls `parse` with one line of the log after the other, and counts the calls.
template <typename Parse>
void forEachLine(benchmark::State& state, Parse parse) {
    const auto all = lines(state.range(0));
    std::size_t next = 0;
    for (auto _ : state) {
        parse(all[next]);
        next = next + 1 == all.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

void readLine(benchmark::State& state) {
    forEachLine(state, [](const std::string& line) {
        benchmark::DoNotOptimize(ASREventRecord::fromLine(line));
    });
}

void parseLineWithLibrary(benchmark::State& state) {
    forEachLine(state, [](const std::string& line) {
        benchmark::DoNotOptimize(nlohmann::json::parse(line));
    });
}

void cutIntoSentences(benchmark::State& state) {
    const EngineCapabilities caps = capabilities(state.range(0));
    forEachRecord(state, [&](const ASREventRecord& record) {
        benchmark::DoNotOptimize(SentenceSegmenter::pieces(
            record.text, true, caps.maxUnpunctuatedUnits, caps.boundaryUnit));
    });
}

void makeStabilityKey(benchmark::State& state) {
    forEachRecord(state, [](const ASREventRecord& record) {
        benchmark::DoNotOptimize(SentenceStabilityKey::normalize(record.text));
    });
}

/// Processes events in a core that has at least as many committed rows as the second argument says.
void ingestEvent(benchmark::State& state) {
    SimulatedHost host;
    constexpr bool segments = true;
    constexpr bool freezes = true;
    constexpr bool commitsClauses = true;
    const CaptionCore::Config config(segments, freezes, commitsClauses);
    const EngineCapabilities caps = capabilities(state.range(0));
    CaptionCore core = CaptionCore::onHost([&] { return config; }, [&] { return caps; }, host,
                                           countingUUIDSource());
    const auto& all = records(state.range(0));
    std::size_t next = 0;
    const auto step = [&] {
        host.advanceBy(0.1);
        if (const auto event = all[next].asEvent())
            core.ingest(*event);
        next = next + 1 == all.size() ? 0 : next + 1;
    };
    while (std::ssize(*core.committedSegments) < state.range(1))
        step();
    for (auto _ : state)
        step();
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(parseLineWithLibrary)->Arg(0)->Arg(1);
BENCHMARK(readLine)->Arg(0)->Arg(1);
BENCHMARK(cutIntoSentences)->Arg(0)->Arg(1);
BENCHMARK(makeStabilityKey)->Arg(0)->Arg(1);
BENCHMARK(ingestEvent)->ArgsProduct({{0, 1}, {0, 1000, 10000}});

} // namespace
} // namespace tessarune

BENCHMARK_MAIN();
