#include "Tessarune/diagnostics/ReplayCLI.h"

#include "Tessarune/diagnostics/ArenaTimelineExport.h"
#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/replay/CaptionMark.h"
#include "TessaruneCore/replay/CaptionReplay.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <exception>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string_view>
#include <system_error>
#include <vector>

namespace tessarune::ReplayCLI {

namespace {

using Arguments = std::vector<std::string>;
using Records = std::vector<ASREventRecord>;

constexpr double defaultFreezeStableSeconds = 0.6;
constexpr std::int64_t defaultSmoothPaceMS = 150;

bool contains(const Arguments& arguments, std::string_view option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
}

/// The argument after the first occurrence of an option, even if it looks like an option itself.
std::optional<std::string> valueOf(const Arguments& arguments, std::string_view option) {
    const auto found = std::find(arguments.begin(), arguments.end(), option);
    if (found == arguments.end() || found + 1 == arguments.end())
        return std::nullopt;
    return *(found + 1);
}

/// The number, if the whole text is one finite decimal number.
std::optional<double> number(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::vector<double> freezeValues(const Arguments& arguments) {
    std::vector<double> values;
    std::string_view rest;
    const auto list = valueOf(arguments, "--freeze");
    if (list)
        rest = *list;
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        if (const auto value = number(rest.substr(0, comma)))
            values.push_back(*value);
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    if (values.empty())
        values.push_back(defaultFreezeStableSeconds);
    return values;
}

struct Options {
    CaptionCore::Config config;
    EngineCapabilities caps;
    std::vector<double> freeze;
    bool printsTimings;
    std::optional<std::string> timelineOut;
    double t0;
};

Options readOptions(const Arguments& arguments, const Records& records) {
    CaptionCore::Config config(!contains(arguments, "--no-segment"), true,
                               !contains(arguments, "--no-clause"));
    config.earlyCutSelfSegmenting = contains(arguments, "--early-cut");
    EngineCapabilities caps;
    caps.punctuatesNatively = true;
    caps.selfSegments = contains(arguments, "--self-segments");
    const auto t0 = valueOf(arguments, "--t0");
    return {
        .config = config,
        .caps = caps,
        .freeze = freezeValues(arguments),
        .printsTimings = contains(arguments, "--words"),
        .timelineOut = valueOf(arguments, "--timeline-out"),
        .t0 = (t0 ? number(*t0) : std::nullopt).value_or(records.front().t),
    };
}

/// Replays the log with one freeze value per call, and prints the results.
class Sweep {
  public:
    Sweep(std::filesystem::path path, const Records& records, const Options& options,
          std::ostream& out, FileSystem& files)
        : path_(std::move(path)), records_(records), options_(options), out_(out), files_(files) {}

    void run(double freezeStableSeconds) {
        CaptionCore::Config config = options_.config;
        config.freezeStableSeconds = freezeStableSeconds;
        const auto output = CaptionReplay::run(records_, config, options_.caps);
        out_ << "\n-- freeze=" << Text::shortest(freezeStableSeconds) << "s · 🔒" << output.lockCount
             << " 🏁" << output.finalCount << " · 段 " << output.committedLines.size() << " --\n";
        if (!options_.timelineOut)
            out_ << output.transcript() << "\n";
        if (options_.printsTimings) {
            out_ << "·· T4 时间线(相对首事件) ··\n";
            for (const std::string& line : output.segmentTimings)
                out_ << line << "\n";
        }
        if (options_.timelineOut)
            exportTimeline(config, output);
    }

  private:
    void exportTimeline(const CaptionCore::Config& config, const CaptionReplay::Output& output) {
        using namespace ArenaTimelineExport;
        const std::string stem = path_.stem().string();
        const std::string freeze = Text::shortest(config.freezeStableSeconds);
        const File file{
            .schemaVersion = 1,
            .run = {.id = "replay-" + stem + "-freeze" + freeze,
                    .startedWall = options_.t0,
                    .audioFile = "session.wav",
                    .audioDurationSec = records_.back().t - options_.t0,
                    .importMode = "replay",
                    .sampleRate = 0},
            .engines = {buildEngine(stem, stem, Caps(options_.caps),
                                    Config(config, defaultSmoothPaceMS, false), output.segments,
                                    output.wordEvents, options_.t0)},
            .reference = {},
        };
        const auto bytes = encode(file);
        if (!bytes)
            return;
        const std::filesystem::path folder = *options_.timelineOut;
        const std::filesystem::path target = folder / ("timeline-freeze" + freeze + ".json");
        // A sweep continues if the disk fails.
        try {
            files_.createDirectories(folder);
        } catch (const std::system_error&) {
        }
        try {
            files_.writeAtomically(target, *bytes);
        } catch (const std::system_error&) {
        }
        out_ << "→ " << target.string() << "\n";
    }

    std::filesystem::path path_;
    const Records& records_;
    const Options& options_;
    std::ostream& out_;
    FileSystem& files_;
};

} // namespace

void run(const Arguments& arguments, std::ostream& out, FileSystem& files) {
    const auto path = valueOf(arguments, "--replay");
    if (!path) {
        out << "usage: Tessarune --replay <events.ndjson> [--freeze 0.6[,0.9,...]] "
               "[--self-segments] [--cumulative-partials] [--no-segment] [--no-clause]\n";
        return;
    }
    Records records;
    try {
        records = ASREventLog::read(*path);
    } catch (const std::exception& error) {
        // The reader's description begins with the path.
        std::string_view description = error.what();
        if (description.starts_with(*path + ": "))
            description.remove_prefix(path->size() + 2);
        out << "error: 读取失败 " << *path << ": " << description << "\n";
        return;
    }
    // The log of a run also holds marks, which are no events. Marks would shift the printed times.
    std::erase_if(records,
                  [](const ASREventRecord& record) { return captionMark(record).has_value(); });
    if (records.empty()) {
        out << "error: 日志为空 " << *path << "\n";
        return;
    }
    const Options options = readOptions(arguments, records);
    const std::filesystem::path file(*path);
    out << "== replay " << file.filename().string() << " · 事件 " << records.size() << " 条 · 跨度 "
        << Text::fixed(records.back().t - records.front().t, 1) << "s ==\n";
    Sweep sweep(file, records, options, out, files);
    for (const double freeze : options.freeze)
        sweep.run(freeze);
}

} // namespace tessarune::ReplayCLI
