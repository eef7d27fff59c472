#pragma once

#include <filesystem>
#include <string_view>

namespace tessarune {

/// Bytes as a file that is not on a disk, for libraries that only read files. It ends with its
/// object; programs that have it open read on.
class MemoryFile {
  public:
    /// Throws std::system_error.
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;

    /// The path, valid in this process only.
    std::filesystem::path path() const;

  private:
    int file_;
};

} // namespace tessarune
