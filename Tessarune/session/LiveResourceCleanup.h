#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

/// Releases resources that a session no longer needs.
namespace tessarune::LiveResourceCleanup {

struct Resources {
    FileSystem& files;
    std::shared_ptr<SerialQueue> utilityQueue;
    /// Returns free memory to the operating system. Runs on the utility queue; may be empty.
    std::function<void()> returnMemory;
    std::optional<std::filesystem::path> debugLog = TessarunePaths::debugLog();
};

/// Empties the debug log, if any, and returns memory in the background. Failures are ignored.
void releaseIdleResources(const Resources& resources);

} // namespace tessarune::LiveResourceCleanup
