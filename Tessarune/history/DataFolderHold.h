#pragma once

#include <memory>
#include <string>

namespace tessarune {

/// No other program writes the data folder while a copy of it exists. Any thread may drop it.
using DataFolderHold = std::shared_ptr<const void>;

/// Permission to write the data folder: without a hold, `problem` tells the user why there is none.
struct DataFolderLease {
    DataFolderHold hold;
    std::string problem;
};

/// For a data folder that no other program knows.
inline DataFolderLease unsharedDataFolder() {
    return {std::make_shared<const int>(), {}};
}

} // namespace tessarune
