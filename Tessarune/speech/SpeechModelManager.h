#pragma once

#include "Tessarune/speech/AssetInventory.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// A speech model as a user sees it.
struct SpeechModelState {
    std::string name;
    std::uint64_t bytes = 0; ///< on the disk, or the approximate size of the download
    bool isInstalled = false;
    bool isRemovable = false; ///< also false for one that came with the program
    std::string damage;       ///< the damage found in an installed one; empty if none

    bool operator==(const SpeechModelState&) const = default;
};

/// The available speech models: listing, downloading and removing them. Main queue.
class SpeechModelManager {
  public:
    virtual ~SpeechModelManager() = default;

    /// All offered ones, the smallest first, then other installed ones.
    virtual std::vector<SpeechModelState> list() const = 0;

    /// Downloads an offered model, or replaces a damaged one; does nothing if it is installed. Like
    /// AssetInstallationRequest::downloadAndInstall; also throws if there is no such model.
    virtual Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                                std::stop_token stop) = 0;

    /// Throws with a text that can be shown, also for a model that came with the program and for an
    /// unknown name.
    virtual void remove(const std::string& name) = 0;
};

} // namespace tessarune
