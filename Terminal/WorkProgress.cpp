#include "Terminal/WorkProgress.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CommandOutput.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace tessarune {

namespace {

/// DownloadPercent takes integers, so a fraction is given as a number of thousandths.
constexpr std::uint64_t hundredPercent = 1000;

} // namespace

WorkProgress::WorkProgress(const TerminalOptions& options, nlohmann::ordered_json json)
    : isJSON_(options.json),
      isQuiet_(options.quiet),
      isOnTerminal_(isScreen(STDERR_FILENO) && !options.quiet && !options.json),
      json_(std::move(json)),
      percent_(options.json ? 1 : percentPerLine) {}

void WorkProgress::report(const std::string& doing, const std::string& step, double fraction) {
    const auto done = static_cast<std::uint64_t>(fraction * static_cast<double>(hundredPercent));
    const int percent = DownloadPercent::of(done, hundredPercent);
    const bool isNewStep = std::exchange(step_, step) != step;
    const bool isNews = percent_.isNews(done, hundredPercent) || isNewStep;
    const std::string text = doing + " " + percentText(percent);
    if (isOnTerminal_ && std::exchange(shown_, text) != text) {
        rewriteLine(text);
    } else if (isJSON_ && isNews) {
        nlohmann::ordered_json line = json_;
        line["step"] = step;
        line["percent"] = percent;
        printJSON(line);
        std::fflush(stdout);
    } else if (!isOnTerminal_ && !isJSON_ && !isQuiet_ && isNews) {
        printNotice(text);
    }
}

void WorkProgress::endLine() {
    if (!std::exchange(shown_, {}).empty())
        rewriteLine("");
}

} // namespace tessarune
