#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A run on the disk.
struct DiagnosticsRun {
    std::filesystem::path directory;
    double modifiedAt = 0; ///< seconds since 1970; minus infinity if unknown

    std::string id() const { return directory.filename().string(); }
};

/// Lists and removes the diagnostics runs of the data folder. Any thread. No function throws: an
/// unreadable folder counts as empty, and a run that cannot be removed stays.
class DiagnosticsCatalog {
  public:
    struct Pruned {
        std::size_t prunedRuns = 0;
        std::int64_t freedBytes = 0;
    };
    struct Budget {
        std::size_t maxRuns = 30;
        std::int64_t maxTotalBytes = 2147483648; ///< 2 GiB
        std::size_t keepMinimum = 3; ///< this many of the newest runs stay, whatever their size
    };

    DiagnosticsCatalog(FileSystem& files, const TessarunePaths& paths)
        : files_(files), folder_(paths.diagnostics()) {}

    /// The run of this name or, if there is none, the runs whose names begin with `name`. "Live-"
    /// may be left out. An empty name matches no run.
    std::vector<DiagnosticsRun> named(std::string_view name);
    /// Returns whether the run was removed. Never removes a folder that is not a run of the data
    /// folder.
    bool remove(const DiagnosticsRun& run);

    /// All runs, newest first.
    std::vector<DiagnosticsRun> runs();
    /// Goes through the runs, newest first, and removes those that exceed the budget.
    Pruned pruneRuns(const Budget& budget);
    /// The size of all files in the folder and below, in bytes; unreadable ones count as 0.
    std::int64_t directorySize(const std::filesystem::path& directory);

  private:
    FileSystem& files_;
    const std::filesystem::path folder_;
};

} // namespace tessarune
