#include "Tessarune/translation/InstalledTranslationService.h"

#include <utility>

namespace tessarune {

namespace {

constexpr const char* preparingSentence = "This is a short sentence.";

class InstalledSession final : public TranslationSession {
  public:
    explicit InstalledSession(std::shared_ptr<TranslationSession> session)
        : session_(std::move(session)) {}

    Task<bool> isReady() override { return session_->isReady(); }
    Task<void> prepareTranslation() override { return prepare(session_); }
    Task<Response> translate(std::string text) override {
        return session_->translate(std::move(text));
    }

  private:
    /// Translating needs what a preparation provides, and says what is missing; preparing would
    /// download it.
    static Task<void> prepare(std::shared_ptr<TranslationSession> session) {
        co_await session->translate(preparingSentence);
    }

    std::shared_ptr<TranslationSession> session_;
};

} // namespace

std::shared_ptr<LanguageAvailability>
InstalledTranslationService::languageAvailability(Executor executor) {
    return service_->languageAvailability(std::move(executor));
}

std::shared_ptr<TranslationSession>
InstalledTranslationService::session(std::string installedSource, std::string target,
                                     Executor executor) {
    return std::make_shared<InstalledSession>(
        service_->session(std::move(installedSource), std::move(target), std::move(executor)));
}

} // namespace tessarune
