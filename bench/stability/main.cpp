#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/text/Text.h"
#include "bench/stability/StabilityPlot.h"
#include "bench/stability/StabilityReport.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {
namespace {

constexpr int exitUsage = 64;
constexpr int exitNoLog = 66;
constexpr int exitCannotWrite = 73;

struct Options {
    std::vector<std::string> logs;
    std::vector<double> freeze{0.3, 0.6, 0.9};
    std::string svg;
    std::string locale = "en-US";
    bool clauses = false;
};

using Records = std::vector<ASREventRecord>;

/// The live program's recogniser ends utterances by itself, so a freeze needs the early cut.
MeasuredText ofCaptions(const Records& records, const Options& options,
                        std::optional<double> freeze) {
    CaptionCore::Config config(true, true, options.clauses);
    config.earlyCutSelfSegmenting = freeze.has_value();
    config.freezeStableSeconds = freeze.value_or(config.freezeStableSeconds);
    EngineCapabilities caps;
    caps.punctuatesNatively = true;
    caps.selfSegments = true;
    return StabilityMeasure::ofCaptions(records, config, caps.localized(options.locale));
}

StabilityReport measure(const std::vector<Records>& logs, const Options& options) {
    StabilityReport report;
    const auto addRow = [&](std::string name, bool isRecogniser, auto measureOne) {
        StabilityRow row{std::move(name), {}, isRecogniser};
        for (const Records& records : logs)
            row.text.add(measureOne(records));
        report.rows.push_back(std::move(row));
    };
    addRow("recogniser", true, StabilityMeasure::ofRecogniser);
    addRow("captions, no freeze", false,
           [&](const Records& records) { return ofCaptions(records, options, std::nullopt); });
    for (const double freeze : options.freeze) {
        addRow("freeze " + Text::shortest(freeze) + " s", false,
               [&](const Records& records) { return ofCaptions(records, options, freeze); });
    }
    return report;
}

std::string title(const std::vector<Records>& logs, const Options& options,
                  const StabilityReport& report) {
    double length = 0;
    std::size_t events = 0;
    for (const Records& records : logs) {
        length += records.back().t - records.front().t;
        events += records.size();
    }
    const std::string name = logs.size() == 1
                                 ? std::filesystem::path(options.logs.front()).filename().string()
                                 : std::to_string(logs.size()) + " logs";
    return name + " · " + Text::fixed(length, 0) + " s · " + std::to_string(events) + " events · " +
           std::to_string(report.rows.front().text.spoken.words) + " words";
}

int run(const Options& options) {
    std::vector<Records> logs;
    for (const std::string& path : options.logs) {
        try {
            logs.push_back(ASREventLog::read(path));
        } catch (const std::exception& error) {
            std::fprintf(stderr, "stability: %s\n", error.what());
            return exitNoLog;
        }
        if (logs.back().empty()) {
            std::fprintf(stderr, "stability: %s has no recognition events\n", path.c_str());
            return exitNoLog;
        }
    }
    StabilityReport report = measure(logs, options);
    report.title = title(logs, options, report);
    std::printf("%s", report.table().c_str());
    if (options.svg.empty())
        return EXIT_SUCCESS;
    std::ofstream file(options.svg, std::ios::binary);
    file << StabilityPlot::svg(report);
    if (!file.flush()) {
        std::fprintf(stderr, "stability: cannot write %s\n", options.svg.c_str());
        return exitCannotWrite;
    }
    return EXIT_SUCCESS;
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    tessarune::Options options;
    CLI::App app(
        "How much shown text is taken back, and how soon words are settled: the quality of "
        "captions in numbers. What they mean: bench/README.md.",
        "stability");
    app.add_option("LOG", options.logs, "event logs; more than one are taken together")
        ->required()
        ->check(CLI::ExistingFile);
    app.add_option("--freeze", options.freeze,
                   "seconds for which a sentence must stand unchanged before it is frozen")
        ->delimiter(',')
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--svg", options.svg, "also draw a plot there");
    app.add_flag("--clauses", options.clauses, "commit at commas and semicolons too");
    app.add_option("--locale", options.locale,
                   "the language, for how long an unpunctuated run may be")
        ->capture_default_str();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : tessarune::exitUsage;
    }
    return tessarune::run(options);
}
