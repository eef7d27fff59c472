#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <utility>

namespace tessarune {

/// The step of reports that are printed as lines, in per cent or megabytes.
constexpr int percentPerLine = 10;

/// Decides when to report the progress of a download: every `step` per cent, or every `step`
/// megabytes if the size is unknown.
class DownloadPercent {
  public:
    explicit DownloadPercent(int step) : step_(step) {}

    /// `expected` must not be 0.
    static int of(std::uint64_t received, std::uint64_t expected);
    /// Whether a step has been completed since the last call; true for the first call.
    bool isNews(std::uint64_t received, std::uint64_t expected);

  private:
    const int step_;
    int last_ = -1;
};

/// A download whose progress is reported.
struct ShownDownload {
    using Progress = std::function<void(std::uint64_t received, std::uint64_t expected)>;

    std::string name;
    /// Ends when the download does; throws if it fails or is stopped.
    std::function<Task<void>(Progress progress, std::stop_token stop)> run;
};

/// A download from one of the stores of models. `Reported` is the type of the store's progress
/// reports.
template <typename Reported, typename Store>
ShownDownload downloadOf(Store& store, const std::string& name) {
    return {name, [&store, name](ShownDownload::Progress progress, std::stop_token stop) {
                const auto report = [progress = std::move(progress)](const Reported& now) {
                    progress(now.received, now.expected);
                };
                return store.download(name, report, std::move(stop));
            }};
}

/// Runs a download. Reports its progress on standard error, in one rewritten line if that is a
/// terminal. With --json, reports it as objects on standard output; with --quiet but without
/// --json, not at all. Prints a failure on standard error.
/// Ctrl-C ends the download with ExitStatus::interrupted; the next attempt continues with the
/// bytes that were received. Returns the exit status. Main queue.
Task<int> runDownload(Program& program, const TerminalOptions& options, ShownDownload download);

constexpr double bytesPerMegabyte = 1e6;

/// Formats bytes as "38.2 MB".
std::string megabytes(std::uint64_t bytes);
/// Formats bytes as a right-aligned table cell, small sizes in kB. An unknown size is 0 bytes and
/// leaves the cell blank.
std::string sizeCell(std::uint64_t bytes);

} // namespace tessarune
