#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// What a run on the disk holds: what its manifest says of the session, and the files that are
/// there. A run whose session was cut off has a part of it.
struct DiagnosticsRunContents {
    struct File {
        std::string path; ///< in the run
        /// Null for a file that no run has by itself.
        const DiagnosticsRunLayout::Artifact* artifact = nullptr;
        std::uint64_t bytes = 0;

        /// Whether it may hold what was said; a file that is not known may.
        bool holdsText() const { return !artifact || artifact->holdsText; }
    };

    std::string id;
    std::filesystem::path directory;
    bool isRun = false;                ///< otherwise a folder of another kind
    std::string level;                 ///< empty if it is not known
    bool isFull = false;               ///< keeps events, texts and samples
    bool isFinished = false;           ///< the session came to its end
    std::optional<double> startedWall; ///< seconds since 1970
    std::optional<double> durationSeconds;
    std::int64_t committedSegments = 0;
    std::int64_t lostRecords = 0; ///< that the disk did not take
    std::string recordingID;      ///< empty if nothing was recorded
    std::vector<File> files;      ///< in the order of the layout, then others by name

    std::uint64_t bytes() const;
    bool has(DiagnosticsRunLayout::Content content) const;

    /// Never throws: what cannot be read is missing.
    static DiagnosticsRunContents read(FileSystem& files, const std::filesystem::path& directory);
};

} // namespace tessarune
