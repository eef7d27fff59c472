#include "TessaruneCore/translation/TranslationFailureDetails.h"

namespace tessarune {

std::string_view name(TranslationFailureCategory category) {
    switch (category) {
    case TranslationFailureCategory::unsupportedSourceLanguage:
        return "unsupportedSourceLanguage";
    case TranslationFailureCategory::unsupportedTargetLanguage:
        return "unsupportedTargetLanguage";
    case TranslationFailureCategory::unsupportedLanguagePairing:
        return "unsupportedLanguagePairing";
    case TranslationFailureCategory::unableToIdentifyLanguage:
        return "unableToIdentifyLanguage";
    case TranslationFailureCategory::nothingToTranslate:
        return "nothingToTranslate";
    case TranslationFailureCategory::sessionCancelled:
        return "sessionCancelled";
    case TranslationFailureCategory::languageResourcesNotReady:
        return "languageResourcesNotReady";
    case TranslationFailureCategory::internalError:
        return "internalError";
    case TranslationFailureCategory::unknown:
        return "unknown";
    }
    return {};
}

CommittedTranslationFailureSeverity severity(TranslationFailureCategory category) {
    switch (category) {
    case TranslationFailureCategory::unsupportedSourceLanguage:
    case TranslationFailureCategory::unsupportedTargetLanguage:
    case TranslationFailureCategory::unsupportedLanguagePairing:
    case TranslationFailureCategory::languageResourcesNotReady:
        return CommittedTranslationFailureSeverity::actionable;
    case TranslationFailureCategory::unableToIdentifyLanguage:
    case TranslationFailureCategory::nothingToTranslate:
    case TranslationFailureCategory::sessionCancelled:
    case TranslationFailureCategory::internalError:
    case TranslationFailureCategory::unknown:
        break;
    }
    return CommittedTranslationFailureSeverity::recoverable;
}

TranslationFailureDetails TranslationFailureDetails::of(const LocalizedError& error,
                                                        TranslationFailureCategory category) {
    return {category, error.errorDescription(), error.domain(), error.code(),
            error.failureReason()};
}

TranslationFailureDetails TranslationFailureDetails::of(const std::exception& error,
                                                        TranslationFailureCategory category) {
    if (const auto* localizedError = dynamic_cast<const LocalizedError*>(&error))
        return of(*localizedError, category);
    return {category, error.what(), "std::exception", 0, std::nullopt};
}

} // namespace tessarune
