#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <cstddef>
#include <filesystem>
#include <string>

/// Whether a run tells the whole story: its event log, replayed with its settings, has to give the
/// rows of its timeline, byte for byte.
namespace tessarune::RunVerification {

struct Result {
    std::size_t rows = 0; ///< that are the same in text, order and kind
    std::string problem;  ///< empty if all of them are
    std::string text;     ///< what the replay gives, a row a line

    bool matches() const { return problem.empty(); }
};

/// Never throws: a run that cannot be read does not match, and says why.
Result verify(FileSystem& files, const std::filesystem::path& directory);

} // namespace tessarune::RunVerification
