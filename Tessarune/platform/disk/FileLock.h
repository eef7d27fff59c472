#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace tessarune {

/// A lock on a file or folder. At most one object, in all processes together, holds it at a time.
/// The lock ends with the object or with the process, even if the process crashes; the file
/// remains.
class FileLock {
  public:
    /// Locks a file that has no other purpose, and creates it if needed. Returns `nullopt` if the
    /// lock is held already. Throws std::system_error if the file cannot be opened or locked.
    static std::optional<FileLock> tryToTake(const std::filesystem::path& path);

    /// Locks the folder itself. Blocks for at most `seconds` while another holder has the lock;
    /// returns `nullopt` after that, or if the folder cannot be opened or locked.
    static std::optional<FileLock> waitForFolder(const std::filesystem::path& folder,
                                                 double seconds);

    /// Whether the lock is held. Does not create the file. The check itself takes the lock for a
    /// moment, during which another attempt to take it fails.
    static bool isTaken(const std::filesystem::path& path);

    FileLock(FileLock&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~FileLock();

    /// Writes `text` into the lock file, for programs that find the lock taken. A failed write
    /// leaves the file empty.
    void note(std::string_view text) const;

  private:
    explicit FileLock(int file) : file_(file) {}
    int file_;
};

} // namespace tessarune
