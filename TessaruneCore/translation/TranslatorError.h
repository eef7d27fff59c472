#pragma once

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/translation/TranslationFailureDetails.h"

#include <exception>
#include <string>
#include <string_view>

namespace tessarune {

/// What a `Translator` fails with; nothing of the service behind it comes through.
class TranslatorError : public LocalizedError {
  public:
    /// The service does not know this direction.
    static TranslatorError unsupportedPair(std::string_view source, std::string_view target);
    /// It does, but its files are not there yet. The text is in the target's language.
    static TranslatorError languageResourcesNotReady(std::string_view source,
                                                     std::string_view target);
    static TranslatorError backendFailure(const TranslationFailureDetails& details);

    const TranslationFailureDetails& details() const { return details_; }

    /// The details of any error; one that is no `TranslatorError` is of the category `unknown`.
    static TranslationFailureDetails details(const std::exception& error);
    /// The same for an exception that was caught with `std::current_exception`.
    static TranslationFailureDetails details(const std::exception_ptr& error);

  private:
    TranslatorError(const LocalizedError& error, TranslationFailureCategory category)
        : LocalizedError(error), details_(TranslationFailureDetails::of(error, category)) {}

    TranslationFailureDetails details_;
};

/// There is no translator on this computer at all.
class TranslatorRuntimeError : public LocalizedError {
  public:
    static TranslatorRuntimeError translatorUnavailable();

  private:
    using LocalizedError::LocalizedError;
};

} // namespace tessarune
