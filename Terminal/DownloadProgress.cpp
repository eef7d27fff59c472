#include "Terminal/DownloadProgress.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/SignalWatch.h"
#include "TessaruneCore/text/Text.h"

#include <unistd.h>

#include <cstdio>

namespace tessarune {

namespace {

/// One line that is rewritten.
void showProgress(const std::string& name, std::uint64_t received, std::uint64_t expected) {
    std::string text = name + ": " + megabytes(received);
    if (expected > 0)
        text = name + ": " + Text::fixed(static_cast<double>(received) / bytesAMegabyte, 1) +
               " of " + megabytes(expected) + " (" +
               Text::fixed(100 * static_cast<double>(received) / static_cast<double>(expected), 0) +
               " %)";
    std::fprintf(stderr, "\r%s ", text.c_str());
}

} // namespace

std::string megabytes(std::uint64_t bytes) {
    return Text::fixed(static_cast<double>(bytes) / bytesAMegabyte, 1) + " MB";
}

std::string sizeCell(std::uint64_t bytes) {
    constexpr std::size_t columns = 9;
    const std::string text = bytes > 0 ? megabytes(bytes) : "";
    return std::string(columns - std::min(columns, text.size()), ' ') + text;
}

Task<int> runDownload(Program& program, const TerminalOptions& options, ShownDownload download) {
    std::stop_source stop;
    SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    const std::string name = download.name;
    const bool shows = isatty(STDERR_FILENO) && !options.quiet;
    ShownDownload::Progress progress;
    if (shows)
        progress = [name](std::uint64_t received, std::uint64_t expected) {
            showProgress(name, received, expected);
        };
    if (!options.quiet)
        std::fprintf(stderr, "Downloading %s…\n", name.c_str());
    try {
        Task<void> downloading = download.begin(std::move(progress), stop.get_token());
        co_await downloading;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%stessarune-terminal: %s: %s\n", shows ? "\n" : "", name.c_str(),
                     error.what());
        co_return static_cast<int>(ExitStatus::noModel);
    }
    if (!options.quiet)
        std::fprintf(stderr, "%s%s is installed.\n", shows ? "\r\033[K" : "", name.c_str());
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
