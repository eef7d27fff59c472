#pragma once

#include <memory>
#include <string>

namespace tessarune {

/// While a copy of the hold exists, no other program changes recordings or their index. Any thread
/// may drop a copy.
using DataFolderHold = std::shared_ptr<const void>;

/// Permission to change recordings: without a hold, `problem` tells the user why there is none.
struct DataFolderLease {
    DataFolderHold hold;
    std::string problem;
};

/// For a data folder that no other program uses.
inline DataFolderLease unsharedDataFolder() {
    return {std::make_shared<const int>(), {}};
}

} // namespace tessarune
