#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace tessarune {

struct UnpackingOutcome {
    std::string failure; ///< what is wrong with the packed file; empty if nothing
    std::string sha256;  ///< of what was written
};

/// Unpacks a file of the zstd format piece by piece, and no further than `most` bytes. Throws
/// std::system_error if the disk fails.
UnpackingOutcome unpackZstd(const std::filesystem::path& packed, AppendFile& out,
                            std::uint64_t most);

} // namespace tessarune
