#pragma once

#include "Tessarune/speech/AssetInventory.h"
#include "TessaruneCore/host/Host.h"

#include <string>
#include <utility>

namespace tessarune::simulation {

/// The speech models of a simulated computer: one model for all locales.
class ScriptedAssetInventory final : public AssetInventory {
  public:
    explicit ScriptedAssetInventory(Host& host) : main_(Executor::main(host)) {}

    bool supported = true;
    bool installed = true;
    double downloadSeconds = 1; ///< progress is reported at the download's start and halfway
    std::string failure;        ///< of the download, at its end; empty: none
    int downloads = 0;
    int stopped = 0; ///< downloads that were stopped

    Task<std::shared_ptr<AssetInstallationRequest>>
    assetInstallationRequest(std::string localeIdentifier) override {
        if (!supported)
            throw UnsupportedSpeechLocale("no model for " + localeIdentifier);
        std::shared_ptr<AssetInstallationRequest> request;
        if (!installed)
            request = std::make_shared<Request>(*this);
        co_return request;
    }

  private:
    class Request final : public AssetInstallationRequest {
      public:
        explicit Request(ScriptedAssetInventory& inventory) : inventory_(inventory) {}
        Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress,
                                      std::stop_token stop) override {
            return download(inventory_, std::move(progress), std::move(stop));
        }

      private:
        ScriptedAssetInventory& inventory_;
    };

    static Task<void> download(ScriptedAssetInventory& inventory,
                               std::function<void(AssetProgress)> progress, std::stop_token stop) {
        ++inventory.downloads;
        for (std::uint64_t half = 0; half < 2; ++half) {
            if (progress)
                progress({half, 2});
            Task<bool> sleeping = sleep(inventory.main_, inventory.downloadSeconds / 2, stop);
            const bool slept = co_await sleeping;
            if (!slept) {
                ++inventory.stopped;
                throw std::runtime_error("stopped");
            }
        }
        if (!inventory.failure.empty())
            throw std::runtime_error(inventory.failure);
        inventory.installed = true;
    }

    Executor main_;
};

} // namespace tessarune::simulation
