#pragma once

#include <filesystem>
#include <string_view>

namespace tessarune {

/// Bytes as a file that is on no disk, for what reads only files. It goes with its object; who has
/// it open by then reads on.
class MemoryFile {
  public:
    /// Throws std::system_error.
    explicit MemoryFile(std::string_view bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;

    /// Of this process alone.
    std::filesystem::path path() const;

  private:
    int file_;
};

} // namespace tessarune
