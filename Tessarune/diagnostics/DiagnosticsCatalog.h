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
    double modifiedAt = 0; ///< seconds since 1970; the distant past if it is not known

    std::string id() const { return directory.filename().string(); }
};

/// Lists and removes the diagnostics runs of the data folder. Any thread; nothing throws: a folder
/// that cannot be read has no runs, and a run that cannot be removed stays.
class DiagnosticsCatalog {
  public:
    struct Pruned {
        std::size_t prunedRuns = 0;
        std::int64_t freedBytes = 0;
    };
    struct Budget {
        std::size_t maxRuns = 30;
        std::int64_t maxTotalBytes = 2147483648;
        std::size_t keepMinimum = 3; ///< so many of the newest stay, whatever they weigh
    };

    DiagnosticsCatalog(FileSystem& files, const TessarunePaths& paths)
        : files_(files), folder_(paths.diagnostics()) {}

    /// The runs whose names begin with `name`, with or without "Live-"; none for an empty name.
    std::vector<DiagnosticsRun> named(std::string_view name);
    /// False if the run is still there, or never was. A folder elsewhere is left alone.
    bool remove(const DiagnosticsRun& run);

    /// The newest first.
    std::vector<DiagnosticsRun> runs();
    /// Removes the oldest runs that are beyond the budget.
    Pruned pruneRuns(const Budget& budget);
    /// Bytes of all files below.
    std::int64_t directorySize(const std::filesystem::path& directory);

  private:
    FileSystem& files_;
    const std::filesystem::path folder_;
};

} // namespace tessarune
