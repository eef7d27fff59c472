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
    std::uint64_t bytes = 0; ///< on the disk, or about what a download brings
    bool isInstalled = false;
    bool isRemovable = false; ///< false too for one that came with the program
    std::string damage;       ///< what is wrong with an installed one; empty if nothing was seen

    bool operator==(const SpeechModelState&) const = default;
};

/// The speech models that can be had: listing, downloading and removing them. Main queue.
class SpeechModelManager {
  public:
    virtual ~SpeechModelManager() = default;

    /// All that are offered, the smallest first, and others that stand in the store.
    virtual std::vector<SpeechModelState> list() const = 0;

    /// Brings a model that is offered, or brings it anew if it is damaged; nothing happens if it is
    /// there. As AssetInstallationRequest::downloadAndInstall; throws too if there is no such
    /// model.
    virtual Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                                std::stop_token stop) = 0;

    /// Throws with a text that can be shown, also for a model that came with the program and for a
    /// name that is none.
    virtual void remove(const std::string& name) = 0;
};

} // namespace tessarune
