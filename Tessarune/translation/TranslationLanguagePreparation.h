#pragma once

#include "TessaruneCore/translation/TranslationFailureDetails.h"

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// How the preparation of a language pair ended.
struct TranslationLanguagePreparationResult {
    enum class Outcome { failed, prepared, unsupported, cancelled };

    Outcome outcome = Outcome::cancelled;
    std::optional<TranslationFailureDetails> failure; ///< set if the outcome is `failed`

    bool operator==(const TranslationLanguagePreparationResult&) const = default;
};

std::string_view name(TranslationLanguagePreparationResult::Outcome outcome);

enum class TranslationLanguagePreparationStart { started, alreadyPreparing, alreadyPrepared };

std::string_view name(TranslationLanguagePreparationStart start);

/// The session's next step after a preparation has ended.
struct TranslationLanguagePreparationFollowUp {
    enum class Kind {
        retryCommitted, ///< translate pending rows
        requeue,        ///< start a run with this pair in spite of the failure
        none,
        actionable ///< tell the user `message`
    };

    Kind kind = Kind::none;
    std::string message;

    bool operator==(const TranslationLanguagePreparationFollowUp&) const = default;
};

namespace TranslationLanguagePreparationPolicy {
TranslationLanguagePreparationFollowUp followUp(const TranslationLanguagePreparationResult& result,
                                                std::string_view source, std::string_view target);
}

/// The language pair whose preparation is displayed.
struct TranslationPreparationDisplayState {
    struct Pair {
        std::string source;
        std::string target;
        bool operator==(const Pair&) const = default;
    };

    std::optional<Pair> preparing; ///< `nullopt`: none

    bool operator==(const TranslationPreparationDisplayState&) const = default;
};

} // namespace tessarune
