#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Archives that every desktop opens: tar, compressed with gzip.
namespace tessarune::TarArchive {

struct Entry {
    std::string name;           ///< in the archive, folders separated by "/"
    std::filesystem::path path; ///< of the file that is read
};

/// Writes a new file that its owner alone can read, block by block; it appears whole or not at all,
/// and takes the place of a file that is there. Blocks; any thread. Throws std::runtime_error that
/// says what cannot be read or written.
void write(const std::filesystem::path& to, const std::vector<Entry>& entries);

} // namespace tessarune::TarArchive
