#pragma once

#include <filesystem>
#include <string_view>

namespace tessarune {

/// A file in memory, for libraries that only read files. The destructor closes the file; a library
/// that has opened `path` can still read the file.
class MemoryFile {
  public:
    /// Copies `bytes`. Throws std::system_error.
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;

    /// The path, valid in this process only.
    std::filesystem::path path() const;

  private:
    int file_;
};

} // namespace tessarune
