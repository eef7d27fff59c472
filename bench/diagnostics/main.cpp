#include "Tessarune/diagnostics/DiagnosticsCatalog.h"
#include "Tessarune/diagnostics/DiagnosticsRunContents.h"
#include "Tessarune/diagnostics/RunVerification.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "Tessarune/platform/process-figures/LinuxProcessFigures.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "bench/session/LongSession.h"
#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"

#include <CLI/CLI.hpp>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

/// Measures what a session costs at each diagnostics level, and the size of its run. See
/// bench/README.md.

namespace tessarune {
namespace {

using Level = DiagnosticsLevel;

struct Options {
    std::string sound = TESSARUNE_BENCH_SOUND;
    double minutes = 10;
    int rounds = 5;
    double recogniser = 0.3; ///< seconds of processor time per second of sound
};

struct Figures {
    std::vector<double> processor; ///< ms per second of session, one for each round
    double bytesPerHour = 0;
    double heapPerHour = 0; ///< bytes of growth in the second half
    std::string replay;     ///< the result of `verify`
};

double heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

LongSession::MakeDiagnostics recorderOf(Level level, LinuxProcessFigures& figures) {
    return [level, &figures](Host& host, FileSystem& files, const TessarunePaths& paths,
                             AppSettings& settings, TessaruneFileLogger& logger,
                             RecordingCatalog& catalog) {
        settings.diagnosticsLevel = level;
        settings.appleAnalyzerDiagnosticsMode = level == Level::trace
                                                    ? AppleAnalyzerDiagnosticsMode::fullRaw
                                                    : AppleAnalyzerDiagnosticsMode::summary;
        settings.sessionDiagnosticsEnabled = level > Level::core;
        TessaruneLog::setDiagnosticsLevel(level);
        return std::make_shared<SessionDiagnosticsRecorder>(
            SessionDiagnosticsRecorder::Environment{.host = host,
                                                    .files = files,
                                                    .paths = paths,
                                                    .settings = settings,
                                                    .logger = logger,
                                                    .catalog = catalog,
                                                    .figures = figures,
                                                    .notifications = nullptr,
                                                    .app = {"bench-diagnostics", "0", "", ""},
                                                    .onASREvent = {},
                                                    .windows = {}});
    };
}

void measure(const Options& options, Level level, Figures& found) {
    LinuxProcessFigures figures;
    LongSession session(options.sound, options.minutes * 60, false, recorderOf(level, figures));
    session.start();
    const double begin = CPUClock::process();
    session.runUntil(options.minutes * 30);
    const double heap = heapInUse();
    session.runUntil(options.minutes * 60);
    const double hours = options.minutes / 60;
    found.processor.push_back((CPUClock::process() - begin) * 1e3 / (options.minutes * 60));
    found.heapPerHour = (heapInUse() - heap) / (hours / 2);
    session.stop();
    const auto runs = DiagnosticsCatalog(session.files(), session.paths()).runs();
    if (runs.empty())
        return;
    const auto contents = DiagnosticsRunContents::read(session.files(), runs.front().directory);
    found.bytesPerHour = static_cast<double>(contents.bytes()) / hours;
    std::string replay;
    if (contents.isFull &&
        !RunVerification::verify(session.files(), runs.front().directory).matches())
        replay = "DIFFERS";
    if (contents.lostRecords > 0)
        replay += (replay.empty() ? "records lost: " : ", records lost: ") +
                  std::to_string(contents.lostRecords);
    if (!replay.empty())
        found.replay = replay;
    else if (found.replay.empty() && contents.isFull)
        found.replay = "the same rows";
}

void report(const Options& options, const std::map<Level, Figures>& figures) {
    const double off = Statistics::median(figures.at(Level::off).processor);
    const double recogniser = options.recogniser * 1e3;
    std::printf("%-9s %12s %14s %16s %12s %12s  %s\n", "level", "ms a second", "of off, alone",
                "of off, whole", "MB an hour", "heap MB/h", "replay");
    for (const auto& [level, found] : figures) {
        const double cost = Statistics::median(found.processor);
        std::printf("%-9s %12.3f %14.3f %16.4f %12.2f %12.2f  %s\n",
                    std::string(storageName(level)).c_str(), cost, cost / off,
                    (recogniser + cost) / (recogniser + off), found.bytesPerHour / 1e6,
                    found.heapPerHour / 1e6, found.replay.c_str());
    }
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    using namespace tessarune;
    Options options;
    CLI::App app("What a session costs at each level of diagnostics, and what it leaves.");
    app.add_option("--minutes", options.minutes, "length of each session")->capture_default_str();
    app.add_option("--rounds", options.rounds, "sessions at each level")->capture_default_str();
    app.add_option("--recogniser", options.recogniser,
                   "processor seconds that a recogniser takes for a second of sound")
        ->capture_default_str();
    app.add_option("--sound", options.sound, "what is heard, again and again")
        ->check(CLI::ExistingFile)
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        std::map<Level, Figures> figures;
        for (int round = 0; round < options.rounds; ++round) {
            for (const Level level : {Level::off, Level::core, Level::standard, Level::trace})
                measure(options, level, figures[level]);
        }
        report(options, figures);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-diagnostics: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
