#pragma once

#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/captions/CaptionSegment.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::testing {

inline TranslationServiceError serviceError(std::optional<TranslationError> kind,
                                            std::string message = "went wrong") {
    return {kind, LocalizedError(std::move(message), "Scripted", 7, "because")};
}

/// Each row as its translation, "!" and its failure, or "?" while it is pending.
inline std::vector<std::string> translationsOf(const std::vector<CaptionSegment>& rows) {
    std::vector<std::string> texts;
    for (const CaptionSegment& row : rows)
        texts.push_back(row.translationError ? "!" + *row.translationError
                                             : row.translatedText.value_or("?"));
    return texts;
}

/// A translation service that a test scripts, in simulated time; it records its calls. Pairs are
/// named like "en-US->fr-FR".
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
        /// `isReady` after a preparation; `nullopt`: unchanged.
        std::optional<bool> readyAfterPreparation = true;
        Answer preparation{};
        /// The outcome of a session's first use. After `alreadyCancelled`, the session never works
        /// again.
        Answer load{};
        double statusDelay = 0;
    };

    std::map<std::string, Pair> pairs; ///< a pair that is not listed is installed
    /// For the next calls of `translate`, in order; then `answer` decides.
    std::deque<Answer> answers;
    std::function<Answer(const std::string& text)> answer;
    std::function<std::string(const std::string& text, const std::string& target)> translation =
        [](const std::string& text, const std::string& target) { return target + ":" + text; };

    std::vector<std::string> calls;
    /// Returns and clears the calls so far.
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

inline void ScriptedTranslationService::note(const std::string& call, const Executor& executor) {
    calls.push_back(call);
    callsOnMainQueue += executor.host().isOnMainQueue() ? 1 : 0;
}

class ScriptedTranslationService::Availability final : public LanguageAvailability {
  public:
    Availability(std::shared_ptr<ScriptedTranslationService> service, Executor executor)
        : service_(std::move(service)), executor_(std::move(executor)) {}

    Task<TranslationAvailabilityStatus> status(std::string from, std::string to) override {
        const std::string pair = from + "->" + to;
        service_->note("status " + pair, executor_);
        co_await sleep(executor_, service_->pairs[pair].statusDelay);
        co_return service_->pairs[pair].status;
    }

  private:
    std::shared_ptr<ScriptedTranslationService> service_;
    Executor executor_;
};

class ScriptedTranslationService::Session final : public TranslationSession {
  public:
    Session(std::shared_ptr<ScriptedTranslationService> service, std::string target,
            std::string pair, Executor executor)
        : service_(std::move(service)),
          target_(std::move(target)),
          pair_(std::move(pair)),
          executor_(std::move(executor)) {}

    Task<bool> isReady() override {
        service_->note("isReady", executor_);
        try {
            co_await load();
            co_return true;
        } catch (const TranslationServiceError&) {
            co_return false;
        }
    }

    Task<void> prepareTranslation() override {
        service_->note("prepare", executor_);
        const Answer given = service_->pairs[pair_].preparation;
        co_await sleep(executor_, given.delay);
        failAs(given);
        auto& pair = service_->pairs[pair_];
        pair.isReady = pair.readyAfterPreparation.value_or(pair.isReady);
        if (pair.isReady)
            pair.status = TranslationAvailabilityStatus::installed;
    }

    Task<Response> translate(std::string text) override {
        service_->note("translate " + text, executor_);
        if (!isLoaded_ || over_)
            co_await load();
        Answer given;
        if (!service_->answers.empty()) {
            given = service_->answers.front();
            service_->answers.pop_front();
        } else if (service_->answer) {
            given = service_->answer(text);
        }
        service_->mostTranslationsInFlight =
            std::max(service_->mostTranslationsInFlight, ++service_->translationsInFlight);
        co_await sleep(executor_, given.delay);
        --service_->translationsInFlight;
        failAs(given);
        co_return Response{service_->translation(text, target_)};
    }

  private:
    Task<void> load() {
        const Answer given = isLoaded_ ? Answer() : service_->pairs[pair_].load;
        co_await sleep(executor_, given.delay);
        if (over_)
            throw *over_;
        failAs(given);
        if (!service_->pairs[pair_].isReady)
            throw serviceError(TranslationError::notInstalled);
        isLoaded_ = true;
    }
    void failAs(const Answer& given) {
        if (!given.error)
            return;
        if (given.error->kind() == TranslationError::alreadyCancelled)
            over_ = given.error;
        throw *given.error;
    }

    bool isLoaded_ = false;
    std::optional<TranslationServiceError> over_; ///< why this session no longer works
    std::shared_ptr<ScriptedTranslationService> service_;
    std::string target_;
    std::string pair_;
    Executor executor_;
};

inline std::shared_ptr<LanguageAvailability>
ScriptedTranslationService::languageAvailability(Executor executor) {
    return std::make_shared<Availability>(shared_from_this(), std::move(executor));
}

inline std::shared_ptr<TranslationSession>
ScriptedTranslationService::session(std::string installedSource, std::string target,
                                    Executor executor) {
    const std::string pair = installedSource + "->" + target;
    note("session " + pair, executor);
    return std::make_shared<Session>(shared_from_this(), target, pair, std::move(executor));
}

} // namespace tessarune::testing
