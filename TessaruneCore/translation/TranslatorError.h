#pragma once

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/translation/TranslationFailureDetails.h"

#include <exception>
#include <string_view>

namespace tessarune {

/// The failure of a `Translator`, made by one of the three functions below. A translator maps every
/// error of its translation service to one of these.
class TranslatorError : public LocalizedError {
  public:
    /// The service does not support this language pair.
    static TranslatorError unsupportedPair(std::string_view source, std::string_view target);
    /// The pair is supported, but its files are not installed. `source` is not used: the message is
    /// the one for the target, in the target's language.
    static TranslatorError languageResourcesNotReady(std::string_view source,
                                                     std::string_view target);
    /// Any other failure, described by `details`.
    static TranslatorError backendFailure(const TranslationFailureDetails& details);

    const TranslationFailureDetails& details() const { return details_; }

    /// The details of any exception; other types than `TranslatorError` get the category `unknown`.
    static TranslationFailureDetails detailsOf(const std::exception& error);
    /// The same for a captured exception. One that is not a `std::exception` has no message.
    static TranslationFailureDetails detailsOf(const std::exception_ptr& error);

  private:
    TranslatorError(const LocalizedError& error, TranslationFailureCategory category)
        : LocalizedError(error), details_(TranslationFailureDetails::of(error, category)) {}

    TranslationFailureDetails details_;
};

/// This computer has no translator at all.
class TranslatorRuntimeError : public LocalizedError {
  public:
    static TranslatorRuntimeError translatorUnavailable();

  private:
    using LocalizedError::LocalizedError;
};

} // namespace tessarune
