#include "TessaruneCore/translation/TranslatorError.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune {

namespace {

constexpr const char* errorDomain = "Tessarune.TranslatorError";
enum Code { unsupportedPairCode, languageResourcesNotReadyCode };

} // namespace

TranslatorError TranslatorError::unsupportedPair(std::string_view source, std::string_view target) {
    return {LocalizedError(TranslationSupport::unsupportedPairMessage(source, target), errorDomain,
                           unsupportedPairCode),
            TranslationFailureCategory::unsupportedLanguagePairing};
}

TranslatorError TranslatorError::languageResourcesNotReady(std::string_view,
                                                           std::string_view target) {
    return {LocalizedError(std::string(TranslationSupport::languageResourceNotReadyMessage(target)),
                           errorDomain, languageResourcesNotReadyCode),
            TranslationFailureCategory::languageResourcesNotReady};
}

TranslatorError TranslatorError::backendFailure(const TranslationFailureDetails& details) {
    return {LocalizedError(details.message, details.domain, details.code, details.failureReason),
            details.category};
}

TranslationFailureDetails TranslatorError::detailsOf(const std::exception& error) {
    if (const auto* known = dynamic_cast<const TranslatorError*>(&error))
        return known->details();
    return TranslationFailureDetails::of(error, TranslationFailureCategory::unknown);
}

TranslationFailureDetails TranslatorError::detailsOf(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& known) {
        return detailsOf(known);
    } catch (...) {
        return {TranslationFailureCategory::unknown, "", "unknown", 0, std::nullopt};
    }
}

TranslatorRuntimeError TranslatorRuntimeError::translatorUnavailable() {
    return {localized(TranslationSupport::appleOfflineUnsupportedMessage),
            "Tessarune.TranslatorRuntimeError", 0};
}

} // namespace tessarune
