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

/// Unpacks a zstd file to `out` piece by piece. Reports a failure if the unpacked contents are
/// larger than `maximumBytes`. Throws std::system_error if the disk fails.
UnpackingOutcome unpackZstd(const std::filesystem::path& packed, AppendFile& out,
                            std::uint64_t maximumBytes);

} // namespace tessarune
