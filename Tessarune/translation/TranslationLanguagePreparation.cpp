#include "Tessarune/translation/TranslationLanguagePreparation.h"

#include "TessaruneCore/translation/TranslatorError.h"

namespace tessarune {

std::string_view name(TranslationLanguagePreparationResult::Outcome outcome) {
    using Outcome = TranslationLanguagePreparationResult::Outcome;
    switch (outcome) {
    case Outcome::failed:
        return "failed";
    case Outcome::prepared:
        return "prepared";
    case Outcome::unsupported:
        return "unsupported";
    case Outcome::cancelled:
        return "cancelled";
    }
    return {};
}

std::string_view name(TranslationLanguagePreparationStart start) {
    switch (start) {
    case TranslationLanguagePreparationStart::started:
        return "started";
    case TranslationLanguagePreparationStart::alreadyPreparing:
        return "alreadyPreparing";
    case TranslationLanguagePreparationStart::alreadyPrepared:
        return "alreadyPrepared";
    }
    return {};
}

TranslationLanguagePreparationFollowUp
TranslationLanguagePreparationPolicy::followUp(const TranslationLanguagePreparationResult& result,
                                               std::string_view source, std::string_view target) {
    using Outcome = TranslationLanguagePreparationResult::Outcome;
    using Kind = TranslationLanguagePreparationFollowUp::Kind;
    switch (result.outcome) {
    case Outcome::prepared:
        return {Kind::retryCommitted, ""};
    case Outcome::cancelled:
        return {Kind::none, ""};
    case Outcome::unsupported:
        return {Kind::actionable,
                TranslatorError::unsupportedPair(source, target).errorDescription()};
    case Outcome::failed:
        break;
    }
    const auto details = result.failure.value_or(TranslationFailureDetails());
    if (severity(details.category) == CommittedTranslationFailureSeverity::actionable)
        return {Kind::actionable, details.message};
    return {Kind::requeue, ""};
}

} // namespace tessarune
