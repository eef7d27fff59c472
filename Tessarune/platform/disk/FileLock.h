#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace tessarune {

/// A lock that one process at a time can hold, by a file that exists for nothing else. It ends with
/// the object or with the process, however that ends; the file stays.
class FileLock {
  public:
    /// Nothing if another holds it. Throws std::system_error if the file cannot be made.
    static std::optional<FileLock> tryToTake(const std::filesystem::path& path);

    /// Locks a folder itself, and waits for others to let go of it, so many seconds at the most.
    /// Nothing after that, or where there is no such folder.
    static std::optional<FileLock> waitForFolder(const std::filesystem::path& folder,
                                                 double seconds);

    /// Whether somebody holds it, without making the file. Keeps others from taking it for a
    /// moment.
    static bool isTaken(const std::filesystem::path& path);

    FileLock(FileLock&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~FileLock();

    /// Leaves a note in the lock's file for those who find it taken. A failure leaves an empty one.
    void note(std::string_view text) const;

  private:
    explicit FileLock(int file) : file_(file) {}
    int file_;
};

} // namespace tessarune
