#include "tests/translation/ScriptedTranslationService.h"

namespace tessarune::testing {

using Service = std::shared_ptr<ScriptedTranslationService>;

TranslationServiceError serviceError(std::optional<TranslationError> kind, std::string message) {
    return {kind, LocalizedError(std::move(message), "Scripted", 7, "because")};
}

void ScriptedTranslationService::note(const std::string& call, const Executor& executor) {
    calls.push_back(call);
    callsOnMainQueue += executor.host().isOnMainQueue() ? 1 : 0;
}

class ScriptedTranslationService::Availability final : public LanguageAvailability {
  public:
    Availability(Service service, Executor executor)
        : service_(std::move(service)), executor_(std::move(executor)) {}

    Task<TranslationAvailabilityStatus> status(std::string from, std::string to) override {
        const std::string pair = from + "->" + to;
        service_->note("status " + pair, executor_);
        Task<bool> pause = sleep(executor_, 0);
        co_await pause;
        co_return service_->pairs[pair].status;
    }

  private:
    Service service_;
    Executor executor_;
};

class ScriptedTranslationService::Session final : public TranslationSession {
  public:
    Session(Service service, std::string target, std::string pair, Executor executor)
        : service_(std::move(service)),
          target_(std::move(target)),
          pair_(std::move(pair)),
          executor_(std::move(executor)) {}

    Task<bool> isReady() override {
        service_->note("isReady", executor_);
        Task<bool> pause = sleep(executor_, 0);
        co_await pause;
        co_return service_->pairs[pair_].isReady;
    }

    Task<void> prepareTranslation() override {
        service_->note("prepare", executor_);
        const Answer answer = service_->pairs[pair_].preparation;
        Task<bool> pause = sleep(executor_, answer.delay);
        co_await pause;
        if (answer.error)
            throw *answer.error;
        auto& pair = service_->pairs[pair_];
        pair.isReady = pair.readyAfterPreparation.value_or(pair.isReady);
        if (pair.isReady)
            pair.status = TranslationAvailabilityStatus::installed;
    }

    Task<Response> translate(std::string text) override {
        service_->note("translate " + text, executor_);
        Answer answer;
        if (!service_->answers.empty()) {
            answer = service_->answers.front();
            service_->answers.pop_front();
        } else if (service_->answer) {
            answer = service_->answer(text);
        }
        service_->mostTranslationsInFlight =
            std::max(service_->mostTranslationsInFlight, ++service_->translationsInFlight);
        Task<bool> pause = sleep(executor_, answer.delay);
        co_await pause;
        --service_->translationsInFlight;
        if (answer.error)
            throw *answer.error;
        co_return Response{service_->translation(text, target_)};
    }

  private:
    Service service_;
    std::string target_;
    std::string pair_;
    Executor executor_;
};

std::shared_ptr<LanguageAvailability>
ScriptedTranslationService::languageAvailability(Executor executor) {
    return std::make_shared<Availability>(shared_from_this(), std::move(executor));
}

std::shared_ptr<TranslationSession> ScriptedTranslationService::session(std::string installedSource,
                                                                        std::string target,
                                                                        Executor executor) {
    const std::string pair = installedSource + "->" + target;
    note("session " + pair, executor);
    return std::make_shared<Session>(shared_from_this(), target, pair, std::move(executor));
}

} // namespace tessarune::testing
