#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The contents of a run on the disk: the data of its manifest, and its files. A run whose session
/// was cut off is incomplete.
struct DiagnosticsRunContents {
    struct File {
        std::string path; ///< relative to the run
        /// Null for a file that the layout does not contain.
        const DiagnosticsRunLayout::Artifact* artifact = nullptr;
        std::uint64_t bytes = 0;

        /// Whether the file may contain spoken text; true for an unknown file.
        bool holdsText() const { return !artifact || artifact->holdsText; }
    };

    std::string id;
    std::filesystem::path directory;
    bool isRun = false;                ///< false: a folder of another kind
    std::string level;                 ///< empty if unknown
    bool isFull = false;               ///< keeps events, texts and samples
    bool isFinished = false;           ///< its end was written
    std::optional<double> startedWall; ///< seconds since 1970
    std::optional<double> durationSeconds;
    std::int64_t committedSegments = 0;
    std::int64_t lostRecords = 0; ///< records that could not be written
    std::string recordingID;      ///< empty if nothing was recorded
    std::vector<File> files;      ///< in the order of the layout, then others by name

    std::uint64_t bytes() const;
    bool has(DiagnosticsRunLayout::Content content) const;

    /// Reads a run. Never throws: unreadable parts are missing.
    static DiagnosticsRunContents read(FileSystem& files, const std::filesystem::path& directory);
};

} // namespace tessarune
