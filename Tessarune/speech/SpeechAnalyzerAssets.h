#pragma once

#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/AssetInventory.h"

#include <functional>
#include <stop_token>
#include <string>

namespace tessarune {

/// Makes sure that the model for a locale is on this computer, downloading it if need be. `reason`
/// says in the log who asked. Throws what the inventory or the installation throws.
Task<void> installAssetsIfNeeded(AssetInventory& assets, TessaruneFileLogger& logger,
                                 std::string localeIdentifier, std::string reason,
                                 std::function<void(AssetProgress)> progress = {},
                                 std::stop_token stop = {});

} // namespace tessarune
