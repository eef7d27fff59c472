#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace tessarune {

struct UnpackingOutcome {
    std::string failure; ///< the problem with the packed file; empty if there is none
    std::string sha256;  ///< of the written file
};

/// Unpacks a zstd file piece by piece, up to `most` bytes. Throws std::system_error if the disk
/// fails.
UnpackingOutcome unpackZstd(const std::filesystem::path& packed, AppendFile& out,
                            std::uint64_t most);

} // namespace tessarune
