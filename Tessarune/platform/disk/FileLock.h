#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace tessarune {

/// A lock that one process at a time can hold, on a file that has no other purpose. It ends with
/// the object or with the process, however that ends; the file stays.
class FileLock {
  public:
    /// Nothing if another holds it. Throws std::system_error if the file cannot be made.
    static std::optional<FileLock> tryToTake(const std::filesystem::path& path);

    /// Locks a folder itself and waits at most so many seconds for other holders. `nullopt` after
    /// that, or if there is no such folder.
    static std::optional<FileLock> waitForFolder(const std::filesystem::path& folder,
                                                 double seconds);

    /// Whether the lock is held, without creating the file. Prevents others from taking it for a
    /// moment.
    static bool isTaken(const std::filesystem::path& path);

    FileLock(FileLock&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~FileLock();

    /// Writes a note into the lock's file for programs that find it taken. A failure leaves an
    /// empty note.
    void note(std::string_view text) const;

  private:
    explicit FileLock(int file) : file_(file) {}
    int file_;
};

} // namespace tessarune
