#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A file that is being written: bytes are appended, and a header may be corrected in place.
///
/// One thread at a time. Failures throw std::system_error with the disk's error code; earlier
/// writes stay. The destructor closes the file and ignores an error; `close` throws it.
class AppendFile {
  public:
    virtual ~AppendFile() = default;

    /// Appends all of `bytes`. After a failure a part of them may remain.
    virtual void append(std::string_view bytes) = 0;
    /// Appends `count` zeros; if the disk supports it, they take neither time nor space. In a file
    /// opened by `create`, first cuts off the remains of a failed append; a count of 0 does only
    /// this.
    virtual void appendZeros(std::uint64_t count) = 0;
    /// Overwrites earlier bytes; the length stays.
    virtual void overwrite(std::uint64_t offset, std::string_view bytes) = 0;
    /// Returns when everything is on the disk (fsync).
    virtual void synchronize() = 0;
    virtual void close() = 0;
};

/// Interface: the disk, so that its faults can be simulated. Any thread; the object itself has no
/// state that an operation changes.
///
/// Failures throw std::system_error with the disk's error code, and a text that names the path.
/// Only `exists` and `isDirectory` never throw: they return false.
class FileSystem {
  public:
    using Path = std::filesystem::path;

    virtual ~FileSystem() = default;

    /// The entire content. Throws for a missing file and for a folder.
    virtual std::string read(const Path& path) = 0;
    /// At most `count` bytes from `offset` on; fewer where the file ends.
    virtual std::string read(const Path& path, std::uint64_t offset, std::size_t count) = 0;

    /// Replaces the file atomically: readers see either the old bytes or the new ones, even after a
    /// loss of power. When it returns, the new bytes are on the disk.
    virtual void writeAtomically(const Path& path, std::string_view bytes) = 0;

    /// Creates or empties the file and opens it. From then on its name survives a loss of power,
    /// and its bytes do so once they are synchronized.
    virtual std::unique_ptr<AppendFile> create(const Path& path) = 0;
    /// Opens a file for appending; creates a missing one like `create`. Several programs may
    /// append to one file: each append goes to the file's current end.
    virtual std::unique_ptr<AppendFile> openForAppending(const Path& path) = 0;

    /// Cuts a file off after `size` bytes. Does not create a missing one, and follows no link.
    virtual void truncate(const Path& path, std::uint64_t size) = 0;

    /// Creates the folder and its parents, private to the user; does nothing if it exists.
    virtual void createDirectories(const Path& path) = 0;
    /// Creates one folder in an existing one, private to the user. False if the name is taken, even
    /// if another program took it only just before.
    virtual bool makeDirectory(const Path& path) = 0;
    /// Removes a file, or a folder with its content. False if there was none.
    virtual bool remove(const Path& path) = 0;
    /// Removes an ordinary file. False for anything else: a folder, a link, no file at all.
    virtual bool removeFile(const Path& path) = 0;
    /// Moves within one disk, replacing `to`. The move survives a loss of power.
    virtual void rename(const Path& from, const Path& to) = 0;

    virtual bool exists(const Path& path) = 0;
    virtual bool isDirectory(const Path& path) = 0;
    virtual std::uint64_t size(const Path& path) = 0;
    /// Seconds since 1970.
    virtual double modifiedAt(const Path& path) = 0;
    /// The names in a folder, sorted, without "." and "..". Empty if the folder does not exist;
    /// throws if the folder's path contains a broken link.
    virtual std::vector<std::string> list(const Path& folder) = 0;
    /// The number of bytes that this user can still write to the disk of `path`.
    virtual std::uint64_t freeSpace(const Path& path) = 0;
};

} // namespace tessarune
