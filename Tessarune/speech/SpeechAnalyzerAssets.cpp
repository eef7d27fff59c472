#include "Tessarune/speech/SpeechAnalyzerAssets.h"

#include <exception>
#include <utility>

namespace tessarune {

namespace {

Task<void> install(AssetInventory& assets, TessaruneFileLogger& logger, LogFields fields,
                   std::string localeIdentifier, std::function<void(AssetProgress)> progress,
                   std::stop_token stop) {
    auto asking = assets.assetInstallationRequest(std::move(localeIdentifier));
    const std::shared_ptr<AssetInstallationRequest> request = co_await asking;
    if (!request) {
        logger.event("speechAnalyzer.assets.ready", fields);
        co_return;
    }
    logger.event("speechAnalyzer.assets.install.start", fields);
    Task<void> installing = request->downloadAndInstall(std::move(progress), std::move(stop));
    co_await installing;
    logger.event("speechAnalyzer.assets.install.done", fields);
}

} // namespace

Task<void> installAssetsIfNeeded(AssetInventory& assets, TessaruneFileLogger& logger,
                                 std::string localeIdentifier, std::string reason,
                                 std::function<void(AssetProgress)> progress,
                                 std::stop_token stop) {
    LogFields fields{{"locale", localeIdentifier}, {"reason", reason}};
    try {
        Task<void> installing = install(assets, logger, fields, std::move(localeIdentifier),
                                        std::move(progress), std::move(stop));
        co_await installing;
    } catch (const std::exception& error) {
        logger.important("speechAnalyzer.assets.install.failed",
                         fields.add("error", std::string(error.what())));
        throw;
    }
}

} // namespace tessarune
