#include "Tessarune/platform/media/M4ATranscoder.h"
#include "bench/session/LongSession.h"
#include "bench/support/CPUClock.h"

#include <CLI/CLI.hpp>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// Measures how the memory and the cost of a session grow with its length, and how long each step
/// of its stop takes. See bench/README.md.

namespace tessarune {
namespace {

struct Options {
    std::string sound = TESSARUNE_BENCH_SOUND;
    std::vector<double> minutes{1, 60};
    std::string compressTo;
    bool leavesWAV = false;
};

double heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// The memory and the cost of the session so far.
struct Sample {
    double minutes = 0;
    double heap = 0;
    LongSession::Kept kept;
    double processor = 0;
};

Sample sample(const LongSession& session, double minutes) {
    return {minutes, heapBytes(), session.kept(), CPUClock::process()};
}

/// Runs the session, and takes a sample after each sixteenth of it.
std::vector<Sample> run(LongSession& session, double minutes) {
    std::vector<Sample> samples;
    constexpr int parts = 16;
    for (int part = 1; part <= parts; ++part) {
        const double until = minutes * part / parts;
        session.runUntil(until * 60);
        samples.push_back(sample(session, until));
    }
    return samples;
}

void printGrowth(const std::vector<Sample>& samples) {
    const Sample& first = samples.front();
    const Sample& last = samples.back();
    const double hours = (last.minutes - first.minutes) / 60;
    const double heap = last.heap - first.heap;
    const auto text = static_cast<double>(last.kept.text - first.kept.text);
    const auto total = static_cast<double>(last.kept.total - first.kept.total);
    const auto words = static_cast<double>(last.kept.words - first.kept.words);
    std::printf("  an hour: %.0f words, text %.0f kB, with the rows' and words' other fields %.0f "
                "kB; memory grows by %.0f kB = %.2f of these, %.1f of the text\n",
                words / hours, text / hours / 1e3, total / hours / 1e3, heap / hours / 1e3,
                heap / total, heap / text);
    const std::size_t quarter = samples.size() / 4;
    const double begin = samples[quarter].processor - samples.front().processor;
    const double end = last.processor - samples[samples.size() - 1 - quarter].processor;
    std::printf("  a minute at the end costs %.2f of one at the beginning (%.2f ms a second of "
                "session)\n",
                end / begin, end * 1e3 / (last.minutes * 60 * 0.25));
}

void printSteps(const LongSession& session) {
    std::printf("  %-34s %10s %10s\n", "stop", "wall", "processor");
    for (const LongSession::Step& step : session.steps()) {
        std::printf("  %-34s %7.1f ms %7.1f ms\n", step.name.c_str(), step.wall * 1e3,
                    step.processor * 1e3);
    }
}

void measure(const Options& options, double minutes) {
    LongSession session(options.sound, minutes * 60, !options.leavesWAV);
    session.start();
    const std::vector<Sample> samples = run(session, minutes);
    std::printf("%g minutes\n", minutes);
    if (minutes >= 30)
        printGrowth(samples);
    std::fflush(stdout);
    const double begin = CPUClock::read(CLOCK_MONOTONIC);
    session.stop();
    printSteps(session);
    std::printf("  %-34s %7.1f ms\n\n", "all", (CPUClock::read(CLOCK_MONOTONIC) - begin) * 1e3);
    std::fflush(stdout);
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    tessarune::Options options;
    CLI::App app("How a session grows with its length, and what its stop takes.");
    app.add_option("MINUTES", options.minutes, "lengths of the sessions")->capture_default_str();
    app.add_option("--sound", options.sound, "what is heard, again and again")
        ->check(CLI::ExistingFile)
        ->capture_default_str();
    app.add_flag("--wav", options.leavesWAV, "no M4A: what recording costs without its encoding");
    app.add_option("--compress-to", options.compressTo, "only compress the sound, as a stop does");
    CLI11_PARSE(app, argc, argv);
    try {
        if (!options.compressTo.empty()) {
            tessarune::transcodeToM4A(options.sound, options.compressTo, {}, {});
            return EXIT_SUCCESS;
        }
        for (const double minutes : options.minutes)
            tessarune::measure(options, minutes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-session: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
