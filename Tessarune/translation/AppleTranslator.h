#pragma once

#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/translation/Translator.h"
#include "TessaruneCore/translation/TranslatorError.h"

#include <map>
#include <memory>
#include <set>
#include <string>

namespace tessarune {

/// A translator that uses the offline translation service: one session per language pair, and a
/// record of the pairs that are ready. Every failure of the service becomes a `TranslatorError`.
///
/// Callable from any thread: the state is accessed only on the translator's own queue, and the code
/// between two suspensions runs without interruption. Operations resume on the executor given at
/// construction.
class AppleTranslator final : public Translator {
  public:
    /// Whether the preparation of a pair may use the network. Listening sessions and refinements
    /// use `never`; the preparation of a pair that is not ready then fails with the service's
    /// reason.
    enum class Downloads { allowed, never };

    AppleTranslator(Host& host, std::shared_ptr<TranslationService> service, Executor caller,
                    Downloads downloads = Downloads::allowed);

    Task<TranslationAvailabilityStatus> availabilityStatus(std::string source,
                                                           std::string target) override;
    Task<void> prepareLanguages(std::string source, std::string target) override;
    Task<void> rebuildLanguagePair(std::string source, std::string target) override;
    Task<std::string> translate(std::string text, std::string source, std::string target) override;

  private:
    struct Pair {
        std::string source;
        std::string target;
        std::string key;
    };
    static Pair pair(std::string source, std::string target);

    Task<TranslationAvailabilityStatus> statusOf(Pair pair);
    Task<void> prepare(Pair pair);
    Task<void> rebuild(Pair pair);
    Task<std::string> translateOnQueue(std::string text, Pair pair);
    Task<TranslatorError> classify(std::exception_ptr error, Pair pair,
                                   std::shared_ptr<TranslationSession> session);

    std::shared_ptr<TranslationSession> translationSession(const Pair& pair);
    TranslatorError mappedTranslationError(const std::exception_ptr& error, const Pair& pair);

    std::shared_ptr<TranslationService> service_;
    Executor queue_;
    Executor caller_;
    const Downloads downloads_;

    // Keyed by `Pair::key`
    std::map<std::string, std::shared_ptr<TranslationSession>> sessions_;
    std::set<std::string> preparedPairs_;
    std::map<std::string, TranslationAvailabilityStatus> availabilityCache_;
    std::shared_ptr<LanguageAvailability> availability_;
};

} // namespace tessarune
