#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "bench/live/EngineAlone.h"
#include "bench/live/EngineMeter.h"
#include "bench/live/LiveSession.h"
#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

/// Measures what captioning costs in addition to the recogniser, and how long a result takes to
/// reach the captions.

namespace tessarune {
namespace {

struct Options {
    std::string file;
    bool engineAlone = false;
    bool records = false;
};

/// Seconds of processor time, and passes of the engine, counted from the first sound.
struct Costs {
    void begin() {
        totalBefore_ = CPUClock::process();
        engineBefore_ = EngineMeter::seconds();
        passesBefore_ = EngineMeter::passes();
    }
    void end() {
        total = CPUClock::process() - totalBefore_;
        engine = EngineMeter::seconds() - engineBefore_;
        passes = EngineMeter::passes() - passesBefore_;
    }

    double total = 0;
    double engine = 0;
    std::size_t passes = 0;

  private:
    double totalBefore_ = 0;
    double engineBefore_ = 0;
    std::size_t passesBefore_ = 0;
};

/// A folder for the settings, recordings and logs of the run. The destructor removes the folder.
class TemporaryHome {
  public:
    TemporaryHome() {
        std::string name = (std::filesystem::temp_directory_path() / "bench-live.XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a temporary folder");
        path_ = name;
        setenv("XDG_CONFIG_HOME", (path_ / "config").c_str(), 1);
        setenv("XDG_DATA_HOME", (path_ / "data").c_str(), 1);
    }
    ~TemporaryHome() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

  private:
    std::filesystem::path path_;
};

void printLine(const char* name, const std::vector<double>& times, const char* meant) {
    using Statistics::percentile;
    std::printf("  %-22s %8.2f ms %8.2f ms    %s\n", name, Statistics::median(times) * 1e3,
                percentile(times, 0.99) * 1e3, meant);
}

void printCosts(const Costs& costs) {
    const double rest = costs.total - costs.engine;
    std::printf(
        "processor time: whole program %.3f s, engine %.3f s (%zu passes, %zu threads of its "
        "own), rest %.3f s = %.2f %% of the engine's\n",
        costs.total, costs.engine, costs.passes, EngineMeter::ownThreads(), rest,
        rest / costs.engine * 100);
}

void printLatency(const ResultLatency& latency) {
    std::printf("\nfrom the recogniser's result to the core's change (%zu guesses, %zu finals)\n",
                latency.guesses.total.size(), latency.finals.total.size());
    std::printf("  %-22s %11s %11s    %s\n", "", "median", "99 %", "intended");
    printLine("guess to event", latency.guesses.toEvent,
              "55 ms, in which newer guesses replace older ones");
    printLine("event to change", latency.guesses.toChange,
              "0 to 60 ms, the least time between two changes");
    printLine("guess to change", latency.guesses.total, "");
    printLine("final to change", latency.finals.total, "no wait");
}

struct Bench {
    explicit Bench(const Options& chosen) : options(chosen), latency(program.host) {}

    SpeechPlatform platform() {
        auto engine = makeSpeechEngine(program.host, program.models,
                                       [] { return std::string(SpeechModels::smallest); },
                                       EngineMeter::library, {});
        return {program.host, std::move(engine), program.speechModels, makeSwresampleConverter,
                program.logger};
    }

    const Options& options;
    Program program;
    ResultLatency latency;
    Costs costs;
};

Task<void> captionTheFile(Bench& bench) {
    Program& program = bench.program;
    program.override(program.settings.recordWhileCaptioning, bench.options.records);
    program.override(program.settings.sessionDiagnosticsEnabled, false);
    SpeechPlatform platform = bench.platform();
    platform.engine = bench.latency.watching(std::move(platform.engine));
    std::FILE* const screen = std::fopen("/dev/null", "w");
    LiveSession session(program, std::move(platform), bench.latency,
                        makeScreenOutput(
                            screen, [] { return ScreenSize{}; }, false));
    std::function<void()> begin = [&bench] { bench.costs.begin(); };
    Task<void> running = session.run(bench.options.file, std::move(begin));
    co_await running;
    bench.costs.end();
    std::fclose(screen);
}

Task<void> recogniseTheFile(Bench& bench) {
    std::function<void()> begin = [&bench] { bench.costs.begin(); };
    Task<void> running = runEngineAlone(bench.program.host, bench.platform().engine,
                                        bench.options.file, std::move(begin), [](const auto&) {});
    co_await running;
    bench.costs.end();
}

Task<void> runThenQuit(Bench& bench) {
    int status = EXIT_SUCCESS;
    try {
        Task<void> running =
            bench.options.engineAlone ? recogniseTheFile(bench) : captionTheFile(bench);
        co_await running;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-live: %s\n", error.what());
        status = EXIT_FAILURE;
    }
    bench.program.loop.quit(status);
}

int measureFile(const Options& options) {
    const TemporaryHome home;
    Bench bench(options);
    spawn(Executor::main(bench.program.host), runThenQuit(bench));
    if (const int status = bench.program.loop.run(); status != EXIT_SUCCESS)
        return status;
    std::printf("%s, %s, %s, %u processors\n",
                std::filesystem::path(options.file).filename().c_str(),
                std::string(SpeechModels::smallest).c_str(),
                options.engineAlone ? "engine alone" : "whole session",
                std::thread::hardware_concurrency());
    printCosts(bench.costs);
    if (!options.engineAlone)
        printLatency(bench.latency);
    return EXIT_SUCCESS;
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    tessarune::Options options;
    CLI::App app(
        "What live captions cost in addition to the recogniser, and how long a result takes to "
        "reach them.");
    app.add_option("FILE", options.file, "speech, played at real speed")
        ->required()
        ->check(CLI::ExistingFile);
    app.add_flag("--engine-alone", options.engineAlone, "only the engine, with the same sound");
    app.add_flag("--record", options.records, "with a recording, as the program does by default");
    CLI11_PARSE(app, argc, argv);
    return tessarune::measureFile(options);
}
