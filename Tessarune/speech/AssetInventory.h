#pragma once

#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// Bytes received and bytes expected in all (0 if unknown).
struct AssetProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0;
};

/// The locale has no model and will have none: a retry is pointless.
struct UnsupportedSpeechLocale : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A missing installation.
class AssetInstallationRequest {
  public:
    virtual ~AssetInstallationRequest() = default;

    /// Downloads and verifies what is missing, and puts it into the model store. Throws with a text
    /// that can be shown, also when `stop` ends it early; the bytes received by then are kept for
    /// the next attempt. `progress`, which may be empty, is called on the main queue.
    virtual Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress,
                                          std::stop_token stop) = 0;
};

/// Seam: which speech models are on this computer. Main queue.
class AssetInventory {
  public:
    virtual ~AssetInventory() = default;

    /// Null if the model for this locale is installed. Throws UnsupportedSpeechLocale if the locale
    /// has none.
    virtual Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) = 0;
};

} // namespace tessarune
