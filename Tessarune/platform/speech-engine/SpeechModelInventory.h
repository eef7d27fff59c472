#pragma once

#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/speech/AssetInventory.h"
#include "Tessarune/speech/SpeechModelManager.h"

#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// Which speech models are on this computer, and how to get the others: the engine's own list of
/// files against the model store. All English locales share one model; other languages have none.
///
/// Main queue. Store and installer must outlive it and the requests that it gave.
class SpeechModelInventory final : public AssetInventory, public SpeechModelManager {
  public:
    using Library = std::function<std::shared_ptr<const MoonshineLibrary>()>;

    /// `choice` as for `makeSpeechEngine`.
    SpeechModelInventory(ModelStore& store, ModelInstaller& installer,
                         std::function<std::string()> choice,
                         Library library = &MoonshineLibrary::shared);

    /// Wants the chosen model, or any where the choice is automatic: then the smallest is fetched
    /// if there is none.
    Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) override;

    std::vector<SpeechModelState> list() const override;
    Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                        std::stop_token stop) override;
    void remove(const std::string& name) override;

    /// What the engine's list says about a model. Throws std::runtime_error for a list that is not
    /// understood.
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
