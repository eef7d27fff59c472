#pragma once

#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// Bytes that have arrived and bytes that are expected in all (0 while that is unknown).
struct AssetProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0;
};

/// There is no model for the locale and there will be none: nothing to retry.
struct UnsupportedSpeechLocale : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// An installation that is still to be done.
class AssetInstallationRequest {
  public:
    virtual ~AssetInstallationRequest() = default;

    /// Downloads what is missing, checks it and puts it into the model store. Throws with a text
    /// that can be shown, also when `stop` asks it to end before it is done; what has arrived by
    /// then is kept for the next attempt. `progress`, which may be empty, is called on the main
    /// queue.
    virtual Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress,
                                          std::stop_token stop) = 0;
};

/// Seam: which speech models are on this computer. Main queue.
class AssetInventory {
  public:
    virtual ~AssetInventory() = default;

    /// Nothing if the model for this locale is installed. Throws UnsupportedSpeechLocale if the
    /// locale has none at all.
    virtual Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) = 0;
};

} // namespace tessarune
