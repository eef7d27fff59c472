#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tessarune::testing {

/// All bytes of a file; none if it is missing.
inline std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeContents(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

} // namespace tessarune::testing
