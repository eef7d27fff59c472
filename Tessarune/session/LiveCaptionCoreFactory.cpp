#include "Tessarune/session/LiveCaptionCoreFactory.h"

#include "TessaruneCore/recognition/ModelCatalog.h"

#include <utility>

namespace tessarune::LiveCaptionCoreFactory {

CaptionCore::Config config(const AppSettings& settings) {
    CaptionCore::Config config(*settings.sentenceSegmentation, *settings.trueFreeze, false);
    config.softClauseLevel = *settings.clauseLevelSegmentation;
    config.freezeStableSeconds = *settings.freezeStableSeconds;
    config.duplicateCommitWindowSeconds = *settings.duplicateCommitWindowSeconds;
    config.softCaptionEnabled = *settings.softCaptionEnabled;
    config.softCaptionStableSeconds = *settings.softCaptionStableSeconds;
    return config;
}

EngineCapabilities capabilities(const AppSettings& settings) {
    const auto option = ModelCatalog::recognitionOption(*settings.selectedRecognitionOptionID);
    return option ? option->capabilities() : EngineCapabilities{};
}

CaptionCore make(Host& host, const AppSettings& settings) {
    return CaptionCore::onHost([&settings] { return config(settings); },
                               [&settings] { return capabilities(settings); }, host);
}

CaptionCore make(Host& host, CaptionClock& clock, const AppSettings& settings) {
    return CaptionCore(
        [&settings] { return config(settings); }, [&settings] { return capabilities(settings); },
        [&clock] { return clock.now(); },
        [&clock](double delay, Block block) { clock.after(delay, std::move(block)); }, UUID::random,
        [&host] { return host.wallClock(); });
}

} // namespace tessarune::LiveCaptionCoreFactory
