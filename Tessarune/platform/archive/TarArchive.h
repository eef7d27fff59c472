#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Archives that every desktop can open: tar, compressed with gzip.
namespace tessarune::TarArchive {

struct Entry {
    std::string name;           ///< path in the archive, folders separated by "/"
    std::filesystem::path path; ///< path of the source file
};

/// Writes an archive that only its owner can read; it replaces an existing file, and appears only
/// when it is complete. Blocks; any thread. Throws std::runtime_error; the text names a source file
/// that cannot be read, or an archive that cannot be created or renamed.
void write(const std::filesystem::path& to, const std::vector<Entry>& entries);

} // namespace tessarune::TarArchive
