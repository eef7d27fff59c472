#pragma once

#include "Tessarune/translation/TranslationService.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune::testing {

TranslationServiceError serviceError(std::optional<TranslationError> kind,
                                     std::string message = "went wrong");

/// A translation service that does what a test tells it, in simulated time, and writes down what it
/// was asked. Pairs are named as "en-US->fr-FR".
class ScriptedTranslationService final
    : public TranslationService,
      public std::enable_shared_from_this<ScriptedTranslationService> {
  public:
    struct Answer {
        double delay = 0;
        std::optional<TranslationServiceError> error{};
    };
    struct Pair {
        TranslationAvailabilityStatus status = TranslationAvailabilityStatus::installed;
        bool isReady = true;
        /// What a preparation makes of the pair; nothing: it stays as it is.
        std::optional<bool> readyAfterPreparation = true;
        Answer preparation{};
    };

    std::map<std::string, Pair> pairs; ///< others are installed
    /// For the next calls of `translate`, in order; then `answer` decides.
    std::deque<Answer> answers;
    std::function<Answer(const std::string& text)> answer;
    std::function<std::string(const std::string& text, const std::string& target)> translation =
        [](const std::string& text, const std::string& target) { return target + ":" + text; };

    std::vector<std::string> calls;
    /// The calls since the last look.
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }
    int translationsInFlight = 0;
    int mostTranslationsInFlight = 0;
    int callsOnMainQueue = 0;

    std::shared_ptr<LanguageAvailability> languageAvailability(Executor executor) override;
    std::shared_ptr<TranslationSession> session(std::string installedSource, std::string target,
                                                Executor executor) override;

  private:
    class Availability;
    class Session;
    void note(const std::string& call, const Executor& executor);
};

} // namespace tessarune::testing
