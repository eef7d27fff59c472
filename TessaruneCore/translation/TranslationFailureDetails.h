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

/// The user must resolve unsupported languages and missing resources; other failures may be
/// temporary.
CommittedTranslationFailureSeverity severity(TranslationFailureCategory category);

/// A failed translation as a plain value, for the logic that reacts to its category and for logs.
struct TranslationFailureDetails {
    TranslationFailureCategory category = TranslationFailureCategory::unknown;
    std::string message; ///< can be shown
    std::string domain;
    std::int64_t code = 0;
    std::optional<std::string> failureReason;

    bool operator==(const TranslationFailureDetails&) const = default;

    static TranslationFailureDetails of(const LocalizedError& error,
                                        TranslationFailureCategory category);
    /// The details of any exception, as far as its type provides them.
    static TranslationFailureDetails of(const std::exception& error,
                                        TranslationFailureCategory category);
};

} // namespace tessarune
