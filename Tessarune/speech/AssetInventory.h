#pragma once

#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Bytes that have arrived and bytes that are expected in all (0 while that is unknown).
struct AssetProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0;
};

/// An installation that is still to be done.
class AssetInstallationRequest {
  public:
    virtual ~AssetInstallationRequest() = default;

    /// Downloads what is missing, checks it and puts it into the model store. Throws with a text
    /// that can be shown. `progress` is called on the main queue.
    virtual Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress) = 0;
};

/// Seam: which speech models are on this computer. Main queue.
class AssetInventory {
  public:
    virtual ~AssetInventory() = default;

    /// Nothing if the model for this locale is installed. Throws if the locale has none at all.
    virtual Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) = 0;
};

} // namespace tessarune
