#include "Tessarune/translation/AppleTranslator.h"

#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune {

namespace {

constexpr const char* preparingSentence = "This is a short sentence.";

} // namespace

AppleTranslator::AppleTranslator(Host& host, std::shared_ptr<TranslationService> service,
                                 Executor caller, Downloads downloads)
    : service_(std::move(service)),
      queue_(Executor::queue(
          host, host.serialQueue("Tessarune.AppleTranslator", QueuePriority::userInitiated))),
      caller_(std::move(caller)),
      downloads_(downloads),
      availability_(service_->languageAvailability(queue_)) {}

AppleTranslator::Pair AppleTranslator::pair(std::string source, std::string target) {
    auto key = TranslationSupport::languagePairKey(source, target);
    return {std::move(source), std::move(target), std::move(key)};
}

Task<TranslationAvailabilityStatus> AppleTranslator::availabilityStatus(std::string source,
                                                                        std::string target) {
    return runOn(queue_, statusOf(pair(std::move(source), std::move(target))), caller_);
}

Task<void> AppleTranslator::prepareLanguages(std::string source, std::string target) {
    return runOn(queue_, prepare(pair(std::move(source), std::move(target))), caller_);
}

Task<void> AppleTranslator::rebuildLanguagePair(std::string source, std::string target) {
    return runOn(queue_, rebuild(pair(std::move(source), std::move(target))), caller_);
}

Task<std::string> AppleTranslator::translate(std::string text, std::string source,
                                             std::string target) {
    return runOn(queue_,
                 translateOnQueue(std::string(Text::trimmed(text)),
                                  pair(std::move(source), std::move(target))),
                 caller_);
}

Task<TranslationAvailabilityStatus> AppleTranslator::statusOf(Pair pair) {
    if (preparedPairs_.contains(pair.key))
        co_return TranslationAvailabilityStatus::installed;
    // A missing pair may be installed later, but an unsupported pair stays unsupported.
    const auto cached = availabilityCache_.find(pair.key);
    if (cached != availabilityCache_.end() &&
        cached->second == TranslationAvailabilityStatus::unsupported)
        co_return cached->second;

    const TranslationAvailabilityStatus status =
        co_await availability_->status(TranslationSupport::appleLanguageIdentifier(pair.source),
                                       TranslationSupport::appleLanguageIdentifier(pair.target));
    availabilityCache_[pair.key] = status;
    co_return status;
}

Task<void> AppleTranslator::prepare(Pair pair) {
    if (preparedPairs_.contains(pair.key))
        co_return;
    const TranslationAvailabilityStatus status = co_await statusOf(pair);
    if (status == TranslationAvailabilityStatus::unsupported)
        throw TranslatorError::unsupportedPair(pair.source, pair.target);

    const auto session = translationSession(pair);
    bool isReady = co_await session->isReady();
    if (!isReady) {
        try {
            // A translation downloads nothing. If files of the pair are missing, it fails with a
            // reason.
            if (downloads_ == Downloads::never)
                co_await session->translate(preparingSentence);
            else
                co_await session->prepareTranslation();
        } catch (...) {
            throw mappedTranslationError(std::current_exception(), pair);
        }
        isReady = co_await session->isReady();
    }
    if (!isReady && status == TranslationAvailabilityStatus::supported)
        throw TranslatorError::languageResourcesNotReady(pair.source, pair.target);
    if (isReady) {
        preparedPairs_.insert(pair.key);
        availabilityCache_[pair.key] = TranslationAvailabilityStatus::installed;
    }
}

Task<void> AppleTranslator::rebuild(Pair pair) {
    // A stale session is replaced rather than repaired.
    sessions_.erase(pair.key);
    preparedPairs_.erase(pair.key);
    availabilityCache_.erase(pair.key);
    co_await prepare(pair);
}

Task<std::string> AppleTranslator::translateOnQueue(std::string text, Pair pair) {
    if (text.empty())
        co_return "";
    if (!preparedPairs_.contains(pair.key)) {
        if (co_await statusOf(pair) == TranslationAvailabilityStatus::unsupported)
            throw TranslatorError::unsupportedPair(pair.source, pair.target);
        co_await prepare(pair);
    }

    const auto session = translationSession(pair);
    std::exception_ptr error;
    try {
        const TranslationSession::Response response = co_await session->translate(text);
        co_return TranslationSupport::normalizedTranslatedText(response.targetText, pair.target);
    } catch (...) {
        error = std::current_exception();
    }
    const TranslatorError classified = co_await classify(error, pair, session);
    throw classified;
}

namespace {

std::optional<TranslationError> kindOf(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const TranslationServiceError& known) {
        return known.kind();
    } catch (...) {
        return std::nullopt;
    }
}

TranslationFailureCategory category(std::optional<TranslationError> kind) {
    if (!kind)
        return TranslationFailureCategory::unknown;
    switch (*kind) {
    case TranslationError::unsupportedSourceLanguage:
        return TranslationFailureCategory::unsupportedSourceLanguage;
    case TranslationError::unsupportedTargetLanguage:
        return TranslationFailureCategory::unsupportedTargetLanguage;
    case TranslationError::unsupportedLanguagePairing:
        return TranslationFailureCategory::unsupportedLanguagePairing;
    case TranslationError::notInstalled:
        return TranslationFailureCategory::languageResourcesNotReady;
    case TranslationError::alreadyCancelled:
        return TranslationFailureCategory::sessionCancelled;
    case TranslationError::unableToIdentifyLanguage:
        return TranslationFailureCategory::unableToIdentifyLanguage;
    case TranslationError::nothingToTranslate:
        return TranslationFailureCategory::nothingToTranslate;
    case TranslationError::internalError:
        return TranslationFailureCategory::internalError;
    }
    return TranslationFailureCategory::unknown;
}

} // namespace

Task<TranslatorError> AppleTranslator::classify(std::exception_ptr error, Pair pair,
                                                std::shared_ptr<TranslationSession> session) {
    const auto kind = kindOf(error);
    if (kind == TranslationError::alreadyCancelled || kind == TranslationError::notInstalled)
        co_return mappedTranslationError(error, pair);
    // If the files of the session are gone, that is the cause, whatever the session reports.
    if (co_await session->isReady())
        co_return mappedTranslationError(error, pair);
    preparedPairs_.erase(pair.key);
    co_return TranslatorError::languageResourcesNotReady(pair.source, pair.target);
}

std::shared_ptr<TranslationSession> AppleTranslator::translationSession(const Pair& pair) {
    auto& session = sessions_[pair.key];
    if (!session)
        session =
            service_->session(TranslationSupport::appleLanguageIdentifier(pair.source),
                              TranslationSupport::appleLanguageIdentifier(pair.target), queue_);
    return session;
}

TranslatorError AppleTranslator::mappedTranslationError(const std::exception_ptr& error,
                                                        const Pair& pair) {
    const auto kind = kindOf(error);
    if (kind == TranslationError::unsupportedLanguagePairing)
        return TranslatorError::unsupportedPair(pair.source, pair.target);
    if (kind == TranslationError::notInstalled) {
        preparedPairs_.erase(pair.key);
        return TranslatorError::languageResourcesNotReady(pair.source, pair.target);
    }
    if (kind == TranslationError::alreadyCancelled) {
        sessions_.erase(pair.key);
        preparedPairs_.erase(pair.key);
    }
    auto details = TranslatorError::detailsOf(error);
    details.category = category(kind);
    return TranslatorError::backendFailure(details);
}

} // namespace tessarune
