#include "Terminal/DownloadProgress.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <system_error>

namespace tessarune {

namespace {

std::string progressText(const std::string& name, std::uint64_t received, std::uint64_t expected) {
    if (expected == 0)
        return localized("%@: %@", {name, megabytes(received)});
    const int percent = DownloadPercent::of(received, expected);
    return localized("%@: %@ of %@ (%@)",
                     {name, megabytes(received), megabytes(expected), percentText(percent)});
}

std::string troubleText(const std::string& name, const DownloadTrouble& trouble) {
    return localized(
        "%@: %@. Next attempt in %lld s.",
        {name, trouble.reason, std::to_string(std::lround(std::ceil(trouble.secondsToNextTry)))});
}

/// Reports a download: on a terminal, in a log, or as JSON.
class DownloadNews {
  public:
    DownloadNews(Program& program, const TerminalOptions& options, std::string name)
        : program_(program),
          isJSON_(options.json),
          isQuiet_(options.quiet),
          isOnTerminal_(isScreen(STDERR_FILENO) && !options.quiet && !options.json),
          name_(std::move(name)),
          percent_(options.json ? 1 : percentPerLine) {
        program_.onDownloadTrouble = [this](const DownloadTrouble& trouble) { report(trouble); };
        if (!isJSON_ && !isQuiet_)
            printNotice(localized("Downloading %@…", {name_}));
    }
    ~DownloadNews() { program_.onDownloadTrouble = {}; }
    DownloadNews(const DownloadNews&) = delete;

    void report(std::uint64_t received, std::uint64_t expected) {
        lastTrouble_.clear();
        const bool isNews = percent_.isNews(received, expected);
        if (isOnTerminal_)
            rewriteLine(progressText(name_, received, expected));
        else if (isJSON_ && isNews)
            printLine({{"received", received}, {"expected", expected}});
        else if (!isJSON_ && !isQuiet_ && isNews)
            printNotice(progressText(name_, received, expected));
    }

    /// Keeps the rewritten line and begins a new one.
    void endLine() const {
        if (isOnTerminal_)
            std::fputs("\n", stderr);
    }

    void reportInstalled() const {
        if (isOnTerminal_)
            rewriteLine("");
        if (!isJSON_ && !isQuiet_)
            printNotice(localized("%@ is installed.", {name_}));
    }

  private:
    /// The files of a model are often downloaded side by side, with the same trouble.
    void report(const DownloadTrouble& trouble) {
        const std::string text = troubleText(name_, trouble);
        if (std::exchange(lastTrouble_, text) == text)
            return;
        if (isOnTerminal_)
            rewriteLine(text);
        else if (isJSON_)
            printLine({{"problem", trouble.reason}, {"nextTry", trouble.secondsToNextTry}});
        else if (!isQuiet_)
            printNotice(text);
    }

    void printLine(const nlohmann::ordered_json& fields) const {
        nlohmann::ordered_json line = {{"type", "download"}, {"name", name_}};
        line.update(fields);
        printJSON(line);
        std::fflush(stdout);
    }

    Program& program_;
    const bool isJSON_;
    const bool isQuiet_;
    const bool isOnTerminal_; ///< a terminal shows the progress; false with --json or --quiet
    const std::string name_;
    DownloadPercent percent_;
    std::string lastTrouble_; ///< empty after progress
};

} // namespace

int DownloadPercent::of(std::uint64_t received, std::uint64_t expected) {
    return static_cast<int>(
        std::floor(100 * static_cast<double>(received) / static_cast<double>(expected)));
}

bool DownloadPercent::isNews(std::uint64_t received, std::uint64_t expected) {
    const int now = expected > 0
                        ? of(received, expected)
                        : static_cast<int>(static_cast<double>(received) / bytesPerMegabyte);
    return std::exchange(last_, now / step_) != now / step_;
}

std::string megabytes(std::uint64_t bytes) {
    return Text::fixed(static_cast<double>(bytes) / bytesPerMegabyte, 1) + " MB";
}

std::string sizeCell(std::uint64_t bytes) {
    constexpr std::size_t columns = 9;
    constexpr double bytesPerKilobyte = 1000;
    constexpr std::uint64_t shownInMegabytes = 100'000;
    std::string text;
    if (bytes >= shownInMegabytes)
        text = megabytes(bytes);
    else if (bytes > 0)
        text = Text::fixed(static_cast<double>(bytes) / bytesPerKilobyte, 1) + " kB";
    return std::string(columns - std::min(columns, text.size()), ' ') + text;
}

Task<int> runDownload(Program& program, const TerminalOptions& options, ShownDownload download) {
    std::stop_source stop;
    SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    try {
        DiskFailure::requireWritable(program.paths.models());
    } catch (const std::system_error& error) {
        printProblem(error.what());
        co_return static_cast<int>(ExitStatus::cannotWrite);
    }
    DownloadNews news(program, options, download.name);
    const ShownDownload::Progress progress = [&news](std::uint64_t received,
                                                     std::uint64_t expected) {
        news.report(received, expected);
    };
    try {
        co_await download.run(progress, stop.get_token());
    } catch (const std::exception& error) {
        news.endLine();
        printProblem(download.name + ": " + error.what());
        co_return static_cast<int>(stop.stop_requested() ? ExitStatus::interrupted
                                                         : ExitStatus::noModel);
    }
    news.reportInstalled();
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
