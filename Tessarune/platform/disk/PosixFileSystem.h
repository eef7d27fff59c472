#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <functional>

namespace tessarune {

/// The computer's own disk. Reads and writes with POSIX calls, so that every error code and every
/// fsync is visible.
class PosixFileSystem : public FileSystem {
  public:
    std::string read(const Path& path) override;
    std::string read(const Path& path, std::uint64_t offset, std::size_t count) override;
    void writeAtomically(const Path& path, std::string_view bytes) override;
    std::unique_ptr<AppendFile> create(const Path& path) override;
    std::unique_ptr<AppendFile> openForAppending(const Path& path) override;
    void truncate(const Path& path, std::uint64_t size) override;
    void createDirectories(const Path& path) override;
    bool makeDirectory(const Path& path) override;
    bool remove(const Path& path) override;
    bool removeFile(const Path& path) override;
    void rename(const Path& from, const Path& to) override;
    bool exists(const Path& path) override;
    bool isDirectory(const Path& path) override;
    std::uint64_t size(const Path& path) override;
    double modifiedAt(const Path& path) override;
    std::vector<std::string> list(const Path& folder) override;
    std::uint64_t freeSpace(const Path& path) override;

    /// Removes what `writeAtomically` left in the folder if its process was killed while it
    /// replaced a file whose name is `isOurs`. Leaves what it cannot read or remove, because such
    /// files only take room.
    static void removeUnfinished(const Path& folder,
                                 const std::function<bool(std::string_view)>& isOurs);
};

} // namespace tessarune
