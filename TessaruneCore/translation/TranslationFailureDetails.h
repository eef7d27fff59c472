#pragma once

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/translation/CommittedTranslationHealthState.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

enum class TranslationFailureCategory {
    unsupportedSourceLanguage,
    unsupportedTargetLanguage,
    unsupportedLanguagePairing,
    unableToIdentifyLanguage,
    nothingToTranslate,
    sessionCancelled,
    languageResourcesNotReady,
    internalError,
    unknown
};

std::string_view name(TranslationFailureCategory category);

/// Languages and missing resources are the user's to change; all else may pass.
CommittedTranslationFailureSeverity severity(TranslationFailureCategory category);

/// A failed translation as a plain value: for the logic that reacts by category, and for logs.
struct TranslationFailureDetails {
    TranslationFailureCategory category = TranslationFailureCategory::unknown;
    std::string message; ///< can be shown
    std::string domain;
    std::int64_t code = 0;
    std::optional<std::string> failureReason;

    bool operator==(const TranslationFailureDetails&) const = default;

    static TranslationFailureDetails of(const LocalizedError& error,
                                        TranslationFailureCategory category);
    /// Of any exception: what is known of it depends on its type.
    static TranslationFailureDetails of(const std::exception& error,
                                        TranslationFailureCategory category);
};

} // namespace tessarune
