#pragma once

#include "Tessarune/platform/disk/FileLock.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tessarune {

/// Makes this process the only writer of a data folder while the object lives; the lock also ends
/// with the process, even if it crashes. A program takes the lock before it writes to the folder,
/// and keeps the lock until that work is done. To list recordings, no lock is needed.
class DataFolderLock {
  public:
    /// The process that holds the lock, as noted in the lock file. A new holder writes this note
    /// a moment after it has taken the lock; until then, these may be the values of the previous
    /// holder.
    struct Holder {
        int processID = 0;   ///< 0 if the file stays empty for 0.1 s or cannot be read
        std::string program; ///< the program's name, as passed to `take`

        /// For a message to the user, at the beginning of a sentence.
        std::string text() const;
        bool operator==(const Holder&) const = default;
    };

    /// Returns the lock, or its current holder. Creates the folder if it is missing. Throws
    /// std::system_error if the folder or the lock file cannot be created or if locking fails.
    static std::variant<DataFolderLock, Holder> take(const TessarunePaths& paths,
                                                     std::string_view program);

    /// The current writer of the folder; `nullopt` if there is none.
    static std::optional<Holder> holder(const TessarunePaths& paths);

  private:
    explicit DataFolderLock(FileLock lock) : lock_(std::move(lock)) {}
    FileLock lock_;
};

} // namespace tessarune
