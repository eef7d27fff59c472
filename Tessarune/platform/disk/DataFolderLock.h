#pragma once

#include "Tessarune/platform/disk/FileLock.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tessarune {

/// Makes this process the only writer of a data folder, as long as the object lives; it ends with
/// the process, however that ends. A program takes it before it touches the catalog and keeps it;
/// one that only lists what is there needs none.
class DataFolderLock {
  public:
    /// Who has the folder.
    struct Holder {
        int processID = 0;   ///< 0 if it has not said so yet
        std::string program; ///< as it was given to `take`

        bool operator==(const Holder&) const = default;
    };

    /// The lock, or who holds it. Makes the folder if it is missing. Throws std::system_error if
    /// that or the lock's file cannot be made.
    static std::variant<DataFolderLock, Holder> take(const TessarunePaths& paths,
                                                     std::string_view program);

    /// Who writes the folder now; nothing if nobody does.
    static std::optional<Holder> holder(const TessarunePaths& paths);

  private:
    explicit DataFolderLock(FileLock lock) : lock_(std::move(lock)) {}
    FileLock lock_;
};

} // namespace tessarune
