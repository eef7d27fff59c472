#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Archives that every desktop opens: tar, compressed with gzip.
namespace tessarune::TarArchive {

struct Entry {
    std::string name;           ///< in the archive, folders separated by "/"
    std::filesystem::path path; ///< of the source file
};

/// Writes a new file that only its owner can read; it appears whole or not at all, and replaces an
/// existing file. Blocks; any thread. Throws std::runtime_error that names the file that cannot be
/// read or written.
void write(const std::filesystem::path& to, const std::vector<Entry>& entries);

} // namespace tessarune::TarArchive
