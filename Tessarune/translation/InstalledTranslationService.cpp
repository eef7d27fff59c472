#include "Tessarune/translation/InstalledTranslationService.h"

#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

class InstalledSession final : public TranslationSession {
  public:
    InstalledSession(std::shared_ptr<TranslationSession> session, std::string pair)
        : session_(std::move(session)), pair_(std::move(pair)) {}

    Task<bool> isReady() override { return session_->isReady(); }
    Task<void> prepareTranslation() override { return prepare(session_, pair_); }
    Task<Response> translate(std::string text) override {
        return session_->translate(std::move(text));
    }

  private:
    static Task<void> prepare(std::shared_ptr<TranslationSession> session, std::string pair) {
        Task<bool> loading = session->isReady();
        const bool isReady = co_await loading;
        if (!isReady)
            throw notInstalled(pair);
    }

    static TranslationServiceError notInstalled(const std::string& pair) {
        const auto kind = TranslationError::notInstalled;
        return {kind, LocalizedError(localized("Apple 翻译语言资源未安装:") + " " + pair,
                                     "Tessarune.Translation", static_cast<std::int64_t>(kind) + 1)};
    }

    std::shared_ptr<TranslationSession> session_;
    std::string pair_;
};

} // namespace

std::shared_ptr<LanguageAvailability>
InstalledTranslationService::languageAvailability(Executor executor) {
    return service_->languageAvailability(std::move(executor));
}

std::shared_ptr<TranslationSession>
InstalledTranslationService::session(std::string installedSource, std::string target,
                                     Executor executor) {
    const std::string pair = installedSource + " → " + target;
    return std::make_shared<InstalledSession>(
        service_->session(std::move(installedSource), std::move(target), std::move(executor)),
        pair);
}

} // namespace tessarune
