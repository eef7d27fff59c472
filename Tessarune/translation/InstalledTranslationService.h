#pragma once

#include "Tessarune/translation/TranslationService.h"

#include <memory>
#include <string>

namespace tessarune {

/// A translation service without its downloads: a pair that is not ready fails with the reason that
/// the service gives for it. A running session translates with this one, so that nothing is sent
/// over the network that the user did not ask for.
class InstalledTranslationService final : public TranslationService {
  public:
    explicit InstalledTranslationService(std::shared_ptr<TranslationService> service)
        : service_(std::move(service)) {}

    std::shared_ptr<LanguageAvailability> languageAvailability(Executor executor) override;
    std::shared_ptr<TranslationSession> session(std::string installedSource, std::string target,
                                                Executor executor) override;

  private:
    std::shared_ptr<TranslationService> service_;
};

} // namespace tessarune
