#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/replay/CaptionReplay.h"
#include "bench/replay/HourLog.h"
#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

/// Measures two ratios that do not depend on the speed of the computer: the time to read and replay
/// an event log, divided by the time that the JSON library needs to parse it; and the time of a
/// partial at the end of the log, divided by the time of a partial at its beginning.

namespace tessarune {
namespace {

struct Case {
    const char* name;
    HourLog::Language language;
    bool asLive; ///< as in the terminal program; otherwise with the defaults of `--replay`
};

constexpr Case cases[] = {
    {"English, replay's defaults", HourLog::Language::english, false},
    {"English, as live", HourLog::Language::english, true},
    {"Chinese, replay's defaults", HourLog::Language::chinese, false},
    {"Chinese, as live", HourLog::Language::chinese, true},
};

CaptionCore::Config config(const Case& which) {
    constexpr bool segments = true;
    constexpr bool freezes = true;
    const bool commitsClauses = !which.asLive;
    return CaptionCore::Config(segments, freezes, commitsClauses);
}

EngineCapabilities capabilities(const Case& which) {
    EngineCapabilities caps;
    caps.punctuatesNatively = true;
    caps.selfSegments = which.asLive;
    return caps.localized(which.language == HourLog::Language::chinese ? "zh-CN" : "en-US");
}

// `bench/replay/instructions` finds these three functions in a profile by their names.

[[gnu::noinline]] std::size_t parseWithLibraryAlone(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::size_t fields = 0;
    for (std::string line; std::getline(file, line);)
        fields += nlohmann::json::parse(line).size();
    return fields;
}

[[gnu::noinline]] std::vector<ASREventRecord> readLog(const std::filesystem::path& path) {
    return ASREventLog::read(path);
}

[[gnu::noinline]] std::size_t replay(const std::vector<ASREventRecord>& records,
                                     const Case& which) {
    return CaptionReplay::run(records, config(which), capabilities(which)).committedLines.size();
}

/// The time that the first and the last `repeatedUtterances` take, in seconds.
struct Ends {
    double first = 0;
    double last = 0;
};

Ends costAtTheEnds(const std::vector<ASREventRecord>& records, const Case& which) {
    const double window = HourLog::utteranceSeconds * HourLog::repeatedUtterances;
    const double firstEnds = records.front().t + window;
    const double lastBegins = records.back().t - window;
    const double lastEnds = records.back().t;
    const double begin = CPUClock::thread();
    double firstDone = 0;
    double lastBegun = 0;
    double lastDone = 0; // excludes the time in which `run` collects its result
    CaptionReplay::run(records, config(which), capabilities(which),
                       [&](const CaptionCore&, CaptionCore::Activity, double t) {
                           if (firstDone == 0 && t >= firstEnds)
                               firstDone = CPUClock::thread();
                           if (lastBegun == 0 && t >= lastBegins)
                               lastBegun = CPUClock::thread();
                           if (t >= lastEnds)
                               lastDone = CPUClock::thread();
                       });
    return {firstDone - begin, lastDone - lastBegun};
}

template <typename Work>
double seconds(Work work) {
    const double begin = CPUClock::thread();
    work();
    return CPUClock::thread() - begin;
}

/// Both sides of a ratio take turns, so that disturbances affect them equally.
void measure(const Case& which, const std::filesystem::path& path, int rounds) {
    std::vector<double> library, reading, replaying, overLibrary, lastOverFirst;
    for (int round = 0; round < rounds; ++round) {
        library.push_back(seconds([&] { parseWithLibraryAlone(path); }));
        std::vector<ASREventRecord> records;
        reading.push_back(seconds([&] { records = readLog(path); }));
        replaying.push_back(seconds([&] { replay(records, which); }));
        overLibrary.push_back((reading.back() + replaying.back()) / library.back());
        const Ends ends = costAtTheEnds(records, which);
        lastOverFirst.push_back(ends.last / ends.first);
    }
    using namespace Statistics;
    std::printf("%-28s %7.0f ms %7.0f ms %7.0f ms %7.2f (%.2f–%.2f) %8.3f (%.3f–%.3f)\n",
                which.name, median(library) * 1e3, median(reading) * 1e3, median(replaying) * 1e3,
                median(overLibrary), percentile(overLibrary, 0.1), percentile(overLibrary, 0.9),
                median(lastOverFirst), percentile(lastOverFirst, 0.1),
                percentile(lastOverFirst, 0.9));
    std::fflush(stdout);
}

void write(const std::vector<ASREventRecord>& records, const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary);
    for (const ASREventRecord& record : records)
        file << record.line().value_or("") << "\n";
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

class TemporaryFile {
  public:
    TemporaryFile() {
        std::string name = (std::filesystem::temp_directory_path() / "hour-log.XXXXXX").string();
        const int descriptor = mkstemp(name.data());
        if (descriptor < 0)
            throw std::runtime_error("cannot make a temporary file");
        close(descriptor);
        path_ = name;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

void compareAll(int rounds) {
    std::printf("%d rounds, medians (10th to 90th percentile)\n\n", rounds);
    std::printf("%-28s %10s %10s %10s %19s %22s\n", "one hour", "JSON alone", "read", "replay",
                "ours / JSON", "last / first");
    for (const Case& which : cases) {
        const TemporaryFile file;
        write(HourLog::make(which.language), file.path());
        measure(which, file.path(), rounds);
    }
}

/// Runs each side once on a part of the hour, for a profiler.
void runOnce(std::size_t number, std::size_t utterances) {
    const Case& which = cases[number];
    const TemporaryFile file;
    write(HourLog::make(which.language, utterances), file.path());
    std::printf("%s: %zu fields, %zu rows\n", which.name, parseWithLibraryAlone(file.path()),
                replay(readLog(file.path()), which));
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    using namespace tessarune;
    CLI::App app("What reading and replaying an hour of recognition events costs, as ratios.");
    int rounds = 15;
    std::size_t once = 0;
    std::size_t utterances = HourLog::utterancesPerHour;
    std::string writeTo;
    bool inChinese = false;
    app.add_option("--rounds", rounds, "how often everything is measured")->capture_default_str();
    app.add_option("--once", once, "run case 1 to 4 a single time, to be profiled")
        ->check(CLI::Range(1, 4));
    app.add_option("--utterances", utterances,
                   "with --once and --write: length of the log, 600 an hour")
        ->check(CLI::Range(2 * HourLog::repeatedUtterances, HourLog::utterancesPerHour * 100));
    app.add_option("--write", writeTo, "only write the log there");
    app.add_flag("--chinese", inChinese, "with --write: the Chinese one");
    CLI11_PARSE(app, argc, argv);
    try {
        if (!writeTo.empty()) {
            write(HourLog::make(inChinese ? HourLog::Language::chinese : HourLog::Language::english,
                                utterances),
                  writeTo);
        } else if (once != 0) {
            runOnce(once - 1, utterances);
        } else {
            compareAll(rounds);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-replay: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
