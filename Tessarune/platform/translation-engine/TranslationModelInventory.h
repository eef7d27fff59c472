#pragma once

#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"
#include "Tessarune/translation/TranslationLanguages.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Which language pairs are on this computer, which can be had, and how to get them: the catalogue
/// against the model store. The catalogue is the one that was fetched last, which is kept beside
/// the models, or the built-in one; it is fetched anew with every download and at no other time.
///
/// Any thread, but for making it and for what `TranslationLanguages` asks for the main queue.
/// Store and installer must outlive it. Dropping it stops the catalogue that is on its way and
/// waits for that; a model that is on its way is the installer's.
class TranslationModelInventory final : public TranslationLanguages {
  public:
    /// The catalogue is fetched as the installer fetches files. `trial` is that of each model; by
    /// default the engine has to load it and translate with it.
    TranslationModelInventory(
        Host& host, ModelStore& store, ModelInstaller& installer,
        TranslationCatalogueSource source = TranslationCatalogueSource::ofEngine(),
        ModelTrial trial = {});
    ~TranslationModelInventory() override;
    TranslationModelInventory(const TranslationModelInventory&) = delete;
    TranslationModelInventory& operator=(const TranslationModelInventory&) = delete;

    /// The pair that serves these platform identifiers: one that is installed, or else one that is
    /// listed, or nothing. A pair that needs a conversion comes last.
    std::optional<TranslationPair> pairFor(std::string_view source, std::string_view target) const;

    /// Looks at the disk, never at the network.
    TranslationAvailabilityStatus status(std::string_view source, std::string_view target) const;

    /// Returns when a model for these platform identifiers stands in the store, on `executor`;
    /// throws DownloadFailed and others, each with a text that can be shown. A model is on its way
    /// once for all who wait, and arrives also when nobody waits any more. One that is damaged, or
    /// that the engine cannot use, stays until another has arrived in its place.
    Task<void> bring(std::string source, std::string target, Executor executor);

    /// Why the model for a target that is offered is of no use; empty if it is here and all its
    /// sums are right, which `list` does not look at. Main queue.
    Task<std::string> flaw(std::string id);

    std::vector<TranslationLanguageState> list() const override;
    Task<void> download(std::string id, std::function<void(TranslationDownloadProgress)> progress,
                        std::stop_token stop) override;
    void remove(const std::string& id) override;

  private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tessarune
