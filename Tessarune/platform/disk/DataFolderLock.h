#pragma once

#include "Tessarune/platform/disk/FileLock.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tessarune {

/// Makes this process the only writer of a data folder while the object lives; the lock ends with
/// the process, however that ends. A program takes it before it uses the catalog and keeps it; one
/// that only lists recordings needs none.
class DataFolderLock {
  public:
    /// Who has the folder.
    struct Holder {
        int processID = 0;   ///< 0 if it has not said so yet
        std::string program; ///< the program's name, as given to `take`

        bool operator==(const Holder&) const = default;
    };

    /// The lock, or its current holder. Creates the folder if it is missing. Throws
    /// std::system_error if the folder or the lock's file cannot be created.
    static std::variant<DataFolderLock, Holder> take(const TessarunePaths& paths,
                                                     std::string_view program);

    /// The current writer of the folder; `nullopt` if there is none.
    static std::optional<Holder> holder(const TessarunePaths& paths);

  private:
    explicit DataFolderLock(FileLock lock) : lock_(std::move(lock)) {}
    FileLock lock_;
};

} // namespace tessarune
