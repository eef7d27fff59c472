#pragma once

#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "tests/simulation/SimulatedSession.h"
#include "tests/translation/ScriptedTranslationService.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessarune::simulation {

/// A simulated session whose captions are translated by a scripted service.
class TranslatedLiveSession : public SimulatedSession {
  public:
    explicit TranslatedLiveSession(std::uint64_t seed = 0, double itsSampleRate = 1600)
        : SimulatedSession(seed, itsSampleRate) {
        settings.translationTargetLanguage = "fr";
        service->answer = [](auto&) {
            return testing::ScriptedTranslationService::Answer{0.01, std::nullopt};
        };
        translation = [this] {
            live = LiveTranscriptTranslation::make(host, settings, logger, service);
            return live;
        };
    }

    ~TranslatedLiveSession() { service->answer = nullptr; } // pending translations may call it

    void begin() {
        launch();
        start();
        hear(2);
    }
    const CaptionCore::Rows& rows() const { return *store->view().captions.committedSegments; }
    std::vector<std::string> shown() const { return testing::translationsOf(rows()); }
    std::string bilingual(const UUID& id) {
        return files.contentsOf(catalog->bilingualTranscriptURL(id));
    }
    UUID recordingID() const { return catalog->recordings().at(0).id; }
    const std::string& translationStatus() const {
        return *store->view().translation.translationStatusMessage;
    }
    /// Kills the program and starts it again.
    void crash() {
        files.failFrom = files.operations + 1;
        stop();
        host.advanceBy(60);
        files.recover();
        launch();
    }

    std::shared_ptr<testing::ScriptedTranslationService> service =
        std::make_shared<testing::ScriptedTranslationService>();
    std::shared_ptr<LiveTranscriptTranslation> live;
};

} // namespace tessarune::simulation
