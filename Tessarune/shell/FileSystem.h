#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A file that is being written: bytes go to its end, and a header may be corrected in place.
///
/// One thread at a time. Failures throw std::system_error with the disk's error code; what was
/// written before stays. Dropping the file closes it and loses an error of closing; call `close` to
/// hear of it.
class AppendFile {
  public:
    virtual ~AppendFile() = default;

    /// Writes all of `bytes` at the end. After a failure a part of them may stand there.
    virtual void append(std::string_view bytes) = 0;
    /// As if so many zeros were appended; where the disk can, they take neither time nor room. What
    /// a failed append left is cut off first, with a count of 0 nothing else is done.
    virtual void appendZeros(std::uint64_t count) = 0;
    /// Overwrites bytes that have been written before; the end stays where it was.
    virtual void overwrite(std::uint64_t offset, std::string_view bytes) = 0;
    /// Returns when the disk has everything (fsync).
    virtual void synchronize() = 0;
    virtual void close() = 0;
};

/// Seam: the disk, so that its faults can be tried. Any thread; no operation changes the state of
/// the object itself.
///
/// Failures throw std::system_error with the disk's error code, and its text names the path.
class FileSystem {
  public:
    using Path = std::filesystem::path;

    virtual ~FileSystem() = default;

    /// The whole content. Throws for a missing file and for a folder.
    virtual std::string read(const Path& path) = 0;
    /// At most `count` bytes from `offset` on; fewer where the file ends.
    virtual std::string read(const Path& path, std::uint64_t offset, std::size_t count) = 0;

    /// Replaces the file as a whole: whoever reads it sees the old bytes or the new ones, also
    /// after a loss of power; once it returns, the new bytes are on the disk.
    virtual void writeAtomically(const Path& path, std::string_view bytes) = 0;

    /// Creates the file, emptying what stood there, and opens it. Its name survives a loss of power
    /// from then on, its bytes once they are synchronized.
    virtual std::unique_ptr<AppendFile> create(const Path& path) = 0;
    /// Opens a file for writing at its end, creating it, as above, if it is missing. Several
    /// programs may append to one file: each append goes to where the file ends then.
    virtual std::unique_ptr<AppendFile> openForAppending(const Path& path) = 0;

    /// Empties a file. What is not there stays so, and no link is followed.
    virtual void empty(const Path& path) = 0;

    /// Makes the folder and those above it, private to the user; fine if it is there.
    virtual void createDirectories(const Path& path) = 0;
    /// Removes a file, or a folder with all that is in it. False if there was nothing.
    virtual bool remove(const Path& path) = 0;
    /// Moves within one disk, replacing what stands at `to`; also after a loss of power.
    virtual void rename(const Path& from, const Path& to) = 0;

    virtual bool exists(const Path& path) = 0;
    virtual bool isDirectory(const Path& path) = 0;
    virtual std::uint64_t size(const Path& path) = 0;
    /// Seconds since 1970.
    virtual double modifiedAt(const Path& path) = 0;
    /// The names in a folder, sorted, without "." and "..". An absent folder is empty.
    virtual std::vector<std::string> list(const Path& folder) = 0;
    /// Bytes that this user can still write on the disk of `path`.
    virtual std::uint64_t freeSpace(const Path& path) = 0;
};

} // namespace tessarune
