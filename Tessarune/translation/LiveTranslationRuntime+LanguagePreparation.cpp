#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "TessaruneCore/translation/TranslatorError.h"

namespace tessarune {

namespace {

constexpr int preparationAttempts = 5;
constexpr double secondsBetweenAttempts = 1.0;

LogFields failureFields(const TranslationFailureDetails& details) {
    return {{"failureCategory", std::string(name(details.category))},
            {"failureDomain", details.domain},
            {"failureCode", details.code}};
}

} // namespace

std::int64_t LiveTranslationRuntime::elapsedMS(double since) const {
    return static_cast<std::int64_t>((now() - since) * 1000);
}

bool LiveTranslationRuntime::isPreparingLanguages(std::string_view source,
                                                  std::string_view target) const {
    return languagePreparationTask_ &&
           languagePreparationKey_ == TranslationSupport::languagePairKey(source, target);
}

void LiveTranslationRuntime::cancelLanguagePreparation() {
    if (languagePreparationTask_)
        languagePreparationTask_->cancel();
    languagePreparationTask_.reset();
    languagePreparationID_.reset();
    languagePreparationKey_.reset();
}

TranslationLanguagePreparationStart LiveTranslationRuntime::startLanguagePreparation(
    std::string source, std::string target, std::shared_ptr<Translator> translator,
    std::string reason, PreparationFinished onFinished) {
    auto key = TranslationSupport::languagePairKey(source, target);
    if (preparedLanguagePairKeys_.contains(key))
        return TranslationLanguagePreparationStart::alreadyPrepared;
    if (languagePreparationTask_ && languagePreparationKey_ == key)
        return TranslationLanguagePreparationStart::alreadyPreparing;

    cancelLanguagePreparation();
    const UUID id = environment_.newID();
    languagePreparationID_ = id;
    languagePreparationKey_ = key;
    log("translation.languagePreparation.start",
        {{"source", source}, {"target", target}, {"reason", reason}});
    std::stop_source stop;
    Preparation preparation{
        id,    std::move(key),        std::move(source),    std::move(target), std::move(reason),
        now(), std::move(translator), std::move(onFinished)};
    languagePreparationTask_ =
        spawn(executor(),
              runPreparation(shared_from_this(), std::move(preparation), stop.get_token()), stop);
    return TranslationLanguagePreparationStart::started;
}

Task<void> LiveTranslationRuntime::runPreparation(Self self, Preparation preparation,
                                                  std::stop_token stop) {
    const TranslationLanguagePreparationResult result = co_await prepareLanguagePair(
        self, preparation.source, preparation.target, preparation.translator, stop);

    if (self->languagePreparationID_ != preparation.id ||
        self->languagePreparationKey_ != preparation.key)
        co_return;
    self->languagePreparationTask_.reset();
    self->languagePreparationKey_.reset();
    if (result.outcome == TranslationLanguagePreparationResult::Outcome::prepared)
        self->preparedLanguagePairKeys_.insert(preparation.key);

    LogFields fields{{"source", preparation.source},
                     {"target", preparation.target},
                     {"reason", preparation.reason},
                     {"result", std::string(name(result.outcome))},
                     {"elapsedMS", self->elapsedMS(preparation.startedAt)}};
    if (result.failure)
        fields.add(failureFields(*result.failure));
    self->log("translation.languagePreparation.done", std::move(fields));
    preparation.onFinished(result);
}

Task<TranslationLanguagePreparationResult>
LiveTranslationRuntime::prepareLanguagePair(Self self, std::string source, std::string target,
                                            std::shared_ptr<Translator> translator,
                                            std::stop_token stop) {
    using Result = TranslationLanguagePreparationResult;
    const Result cancelled{Result::Outcome::cancelled, std::nullopt};
    for (int attempt = 1;; ++attempt) {
        if (stop.stop_requested())
            co_return cancelled;
        const TranslationAvailabilityStatus status =
            co_await translator->availabilityStatus(source, target);
        if (stop.stop_requested())
            co_return cancelled;
        if (status == TranslationAvailabilityStatus::unsupported)
            co_return Result{Result::Outcome::unsupported, std::nullopt};

        std::exception_ptr error;
        try {
            co_await translator->prepareLanguages(source, target);
            co_return Result{Result::Outcome::prepared, std::nullopt};
        } catch (...) {
            error = std::current_exception();
        }
        if (attempt == preparationAttempts) {
            if (stop.stop_requested())
                co_return cancelled;
            co_return Result{Result::Outcome::failed, TranslatorError::detailsOf(error)};
        }
        co_await sleep(self->executor(), secondsBetweenAttempts, stop);
    }
}

Task<void> LiveTranslationRuntime::rebuildCommittedLanguagePair(std::string source,
                                                                std::string target,
                                                                std::stop_token stop) {
    return rebuild(shared_from_this(), std::move(source), std::move(target), std::move(stop));
}

Task<void> LiveTranslationRuntime::rebuild(Self self, std::string source, std::string target,
                                           std::stop_token stop) {
    const auto translator = self->cachedTranslator;
    if (!translator) {
        const auto unavailable = TranslatorRuntimeError::translatorUnavailable();
        throw TranslatorError::backendFailure(
            TranslationFailureDetails::of(unavailable, TranslationFailureCategory::unknown));
    }
    const auto key = TranslationSupport::languagePairKey(source, target);
    self->cancelLanguagePreparation();
    self->preparedLanguagePairKeys_.erase(key);
    ++self->committedSessionGeneration;
    const double startedAt = self->now();
    const LogFields fields{
        {"source", source}, {"target", target}, {"generation", self->committedSessionGeneration}};
    self->log("translation.languagePairRecovery.start", fields);

    std::exception_ptr error;
    try {
        co_await translator->rebuildLanguagePair(source, target);
        if (stop.stop_requested())
            throw CancellationError();
    } catch (...) {
        error = std::current_exception();
    }

    if (!error)
        self->preparedLanguagePairKeys_.insert(key);
    LogFields done = fields;
    done.add("result", std::string(error ? "failed" : "prepared"));
    if (error)
        done.add(failureFields(TranslatorError::detailsOf(error)));
    done.add("elapsedMS", self->elapsedMS(startedAt));
    self->log("translation.languagePairRecovery.done", std::move(done));
    if (error)
        std::rethrow_exception(error);
}

} // namespace tessarune
