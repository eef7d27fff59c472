#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <cstddef>
#include <filesystem>
#include <string>

/// Verifies that a run is complete: a replay of its event log with its settings must produce the
/// rows of its timeline, with the same texts byte for byte and the same kinds.
namespace tessarune::RunVerification {

struct Result {
    std::size_t rows = 0; ///< number of rows equal in text and kind, before the first difference
    std::string problem;  ///< empty if all rows are equal
    std::string text;     ///< the replayed rows, one per line

    bool matches() const { return problem.empty(); }
};

/// Never throws: an unreadable run does not match, and `problem` says why.
Result verify(FileSystem& files, const std::filesystem::path& directory);

} // namespace tessarune::RunVerification
