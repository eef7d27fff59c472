#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tessarune::testing {

/// The bytes of a file; empty if it cannot be read.
inline std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Replaces the contents of a file. Ignores failures: the test then fails when it uses the file.
inline void writeContents(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

} // namespace tessarune::testing
