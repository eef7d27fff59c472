#pragma once

#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/speech/AssetInventory.h"
#include "Tessarune/speech/SpeechModelManager.h"

#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// Which speech models are installed, and how to install the others: the engine's own list of files
/// combined with the model store. All English locales share one model; other languages have none.
///
/// Main queue. Store and installer must outlive it and the requests that it returned.
class SpeechModelInventory final : public AssetInventory, public SpeechModelManager {
  public:
    using Library = std::function<std::shared_ptr<const MoonshineLibrary>()>;

    /// `choice` is the one of `makeSpeechEngine`.
    SpeechModelInventory(ModelStore& store, ModelInstaller& installer,
                         std::function<std::string()> choice,
                         Library library = &MoonshineLibrary::shared);

    /// Requests the chosen model. If the choice is automatic, any installed model will do; if there
    /// is none, requests the smallest.
    Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) override;

    std::vector<SpeechModelState> list() const override;
    Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                        std::stop_token stop) override;
    void remove(const std::string& name) override;

    /// The entry for a model in the engine's list. Throws std::runtime_error for an invalid list.
    static AvailableModel availableModel(const OfferedSpeechModel& offer,
                                         const MoonshineLibrary& library);

  private:
    bool isWhole(const std::string& name) const;

    ModelStore& store_;
    ModelInstaller& installer_;
    std::function<std::string()> choice_;
    Library library_;
};

} // namespace tessarune
