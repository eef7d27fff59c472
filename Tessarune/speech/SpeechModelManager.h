#pragma once

#include "Tessarune/speech/AssetInventory.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// A speech model for display to the user.
struct SpeechModelState {
    std::string name;
    std::uint64_t bytes = 0; ///< on the disk, or the approximate size of the download
    bool isInstalled = false;
    bool isRemovable = false; ///< installed, and did not come with the program
    std::string damage;       ///< the problem with an installed model's files; empty if none

    bool operator==(const SpeechModelState&) const = default;
};

/// Interface: lists, downloads and removes speech models. Main queue.
class SpeechModelManager {
  public:
    virtual ~SpeechModelManager() = default;

    /// All offered models, smallest first, then the other installed models.
    virtual std::vector<SpeechModelState> list() const = 0;

    /// Downloads an offered model, or replaces a damaged one; does nothing if the model is intact.
    /// Parameters and failures as in AssetInstallationRequest::downloadAndInstall; also throws if
    /// the model is not offered.
    virtual Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                                std::stop_token stop) = 0;

    /// Throws an exception with a text for the user if the removal fails, the model came with the
    /// program, or the name is unknown.
    virtual void remove(const std::string& name) = 0;
};

} // namespace tessarune
