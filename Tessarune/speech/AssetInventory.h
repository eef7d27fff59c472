#pragma once

#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// The progress of a download, in bytes.
struct AssetProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0; ///< the total; 0 if unknown
};

/// Thrown if no speech model serves the locale; a retry is pointless.
struct UnsupportedSpeechLocale : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A model that must be installed.
class AssetInstallationRequest {
  public:
    virtual ~AssetInstallationRequest() = default;

    /// Downloads the model, verifies it and puts it into the model store. Throws an exception with
    /// a text for the user, also if `stop` ends the download early; the received bytes are kept for
    /// the next attempt. `progress`, which may be empty, is called on the main queue.
    virtual Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress,
                                          std::stop_token stop) = 0;
};

/// Interface: the speech models on this computer. Main queue.
class AssetInventory {
  public:
    virtual ~AssetInventory() = default;

    /// Returns null if the model for this locale is installed. Throws UnsupportedSpeechLocale if no
    /// model serves the locale.
    virtual Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) = 0;
};

} // namespace tessarune
