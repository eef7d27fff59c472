#pragma once

#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"
#include "Tessarune/translation/TranslationLanguages.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The language pairs that are installed or available, and their installation: the catalogue
/// combined with the model store. Uses the catalogue that was fetched last, which is stored beside
/// the models, or else the built-in one; only a download fetches a catalogue.
///
/// Any thread, except for the constructor and the functions of `TranslationLanguages`, which use
/// the main queue. Store and installer must outlive it. The destructor stops and awaits a running
/// fetch of the catalogue; running downloads of models belong to the installer.
class TranslationModelInventory final : public TranslationLanguages {
  public:
    /// The catalogue is fetched with the installer's DownloadPolicy. `trial` tests each model
    /// before it is installed. `ensureInstalled` and `download` also test an installed model, and
    /// replace it only if the test fails. The default trial loads the model and translates a
    /// sentence.
    TranslationModelInventory(
        Host& host, ModelStore& store, ModelInstaller& installer,
        TranslationCatalogueSource source = TranslationCatalogueSource::ofEngine(),
        ModelTrial trial = {});
    ~TranslationModelInventory() override;
    TranslationModelInventory(const TranslationModelInventory&) = delete;
    TranslationModelInventory& operator=(const TranslationModelInventory&) = delete;

    /// The best pair for these platform identifiers: an installed one, or else a listed one. A pair
    /// that converts to traditional characters comes after all others, even if it is the only one
    /// installed. `nullopt` if there is no pair.
    std::optional<TranslationPair> pairFor(std::string_view source, std::string_view target) const;

    /// Reads the disk, never the network.
    TranslationAvailabilityStatus status(std::string_view source, std::string_view target) const;

    /// Downloads a model for these platform identifiers, unless an intact one is in the store.
    /// Resumes on `executor`. Throws DownloadFailed and other exceptions, whose texts can be shown.
    /// All callers share one download of a model, which continues even if none of them still waits.
    /// A damaged or unusable model stays until another one replaces it.
    Task<void> ensureInstalled(std::string source, std::string target, Executor executor);

    /// Returns why the model for an offered target is unusable; empty if it is installed and all
    /// its checksums match, which `list` does not check. Main queue.
    Task<std::string> flaw(std::string id);

    std::vector<TranslationLanguageState> list() const override;
    Task<void> download(std::string id, std::function<void(TranslationDownloadProgress)> progress,
                        std::stop_token stop) override;
    void remove(const std::string& id) override;
    /// `handler` is called on the main queue after each `download` that succeeded.
    void setInstalledHandler(std::function<void(const std::string& id)> handler);

  private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tessarune
