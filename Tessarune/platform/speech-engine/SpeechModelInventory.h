#pragma once

#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/speech/AssetInventory.h"
#include "Tessarune/speech/SpeechModelManager.h"

#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// Lists the installed speech models and installs others: combines the engine's list of files with
/// the model store. All English locales share one model; other languages have none.
///
/// Main queue. The store and the installer must outlive it; it must outlive its requests.
class SpeechModelInventory final : public AssetInventory, public SpeechModelManager {
  public:
    using Library = std::function<std::shared_ptr<const MoonshineLibrary>()>;

    /// `choice` is like `modelChoice` of `makeSpeechEngine`, but is called on the main queue. A
    /// null `choice` means "automatic".
    SpeechModelInventory(ModelStore& store, ModelInstaller& installer,
                         std::function<std::string()> choice,
                         Library library = &MoonshineLibrary::shared);

    /// Returns a request for the chosen model, null if it is installed and intact. If the choice is
    /// automatic, any intact model suffices; if there is none, requests the smallest.
    Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) override;

    std::vector<SpeechModelState> list() const override;
    Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                        std::stop_token stop) override;
    void remove(const std::string& name) override;

    /// The files of a model from the engine's list. Throws std::runtime_error if the list is
    /// invalid.
    static AvailableModel availableModel(const OfferedSpeechModel& offer,
                                         const MoonshineLibrary& library);

  private:
    bool isIntact(const std::string& name) const;

    ModelStore& store_;
    ModelInstaller& installer_;
    std::function<std::string()> choice_;
    Library library_;
};

} // namespace tessarune
