#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>

namespace tessarune {

/// Decides when to report the progress of a download: once per `step` per cent, or megabytes if the
/// size is unknown.
class DownloadPercent {
  public:
    explicit DownloadPercent(int step) : step_(step) {}

    static int of(std::uint64_t received, std::uint64_t expected);
    bool isNews(std::uint64_t received, std::uint64_t expected);

  private:
    const int step_;
    int last_ = -1;
};

/// Downloads one thing and reports its progress and failures on standard error, in one line that is
/// rewritten if possible, or as JSON. Ctrl-C ends it with ExitStatus::stoppedTwice; the bytes
/// received by then are kept for the next attempt. Returns the exit status. Main queue.
struct ShownDownload {
    using Progress = std::function<void(std::uint64_t received, std::uint64_t expected)>;

    std::string name;
    std::function<Task<void>(Progress progress, std::stop_token stop)> begin;
};
Task<int> runDownload(Program& program, const TerminalOptions& options, ShownDownload download);

constexpr double bytesAMegabyte = 1e6;

/// Formats bytes as "38.2 MB".
std::string megabytes(std::uint64_t bytes);
/// A size as a cell of a table, flush right, small ones in kB; blank for an unknown one.
std::string sizeCell(std::uint64_t bytes);

} // namespace tessarune
