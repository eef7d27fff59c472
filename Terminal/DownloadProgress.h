#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>

namespace tessarune {

/// When a download has got so far that whoever reads along should hear of it: once for every `step`
/// per cent, or megabytes while the size is unknown.
class DownloadPercent {
  public:
    explicit DownloadPercent(int step) : step_(step) {}

    static int of(std::uint64_t received, std::uint64_t expected);
    bool isNews(std::uint64_t received, std::uint64_t expected);

  private:
    const int step_;
    int last_ = -1;
};

/// Downloads one thing, and says how it goes on standard error, in one line that is rewritten
/// where that can be done, or as JSON; why it gets nowhere, too. Ctrl-C ends it with
/// ExitStatus::stoppedTwice; what has arrived by then is kept for the next attempt. Gives the
/// status to end with. Main queue.
struct ShownDownload {
    using Progress = std::function<void(std::uint64_t received, std::uint64_t expected)>;

    std::string name;
    std::function<Task<void>(Progress progress, std::stop_token stop)> begin;
};
Task<int> runDownload(Program& program, const TerminalOptions& options, ShownDownload download);

constexpr double bytesAMegabyte = 1e6;

/// "38.2 MB", of bytes.
std::string megabytes(std::uint64_t bytes);
/// The same as a cell of a table, flush right; blank for an unknown size.
std::string sizeCell(std::uint64_t bytes);

} // namespace tessarune
