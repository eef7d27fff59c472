#pragma once

#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/AssetInventory.h"

#include <functional>
#include <stop_token>
#include <string>

namespace tessarune {

/// Ensures that the model for a locale is installed, downloading it if necessary. `reason` names
/// the caller in the log. Throws what the inventory or the installation throws.
Task<void> installAssetsIfNeeded(AssetInventory& assets, TessaruneFileLogger& logger,
                                 std::string localeIdentifier, std::string reason,
                                 std::function<void(AssetProgress)> progress = {},
                                 std::stop_token stop = {});

} // namespace tessarune
