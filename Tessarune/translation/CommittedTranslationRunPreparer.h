#pragma once

#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "Tessarune/translation/TranslationRunContext.h"

#include <string>
#include <variant>

/// Decides whether a run of committed translations may start now. Main queue.
namespace tessarune::CommittedTranslationRunPreparer {

/// It cannot, and the user should know: a short text beside the captions, and a sentence.
struct Blocked {
    std::string translationStatusMessage;
    std::string statusMessage;

    bool operator==(const Blocked&) const = default;
};

/// Nothing to do now.
struct Idle {
    bool operator==(const Idle&) const = default;
};

using Result = std::variant<TranslationRunContext, Blocked, Idle>;

/// Makes the translator if it is needed and not there yet.
Result prepare(LiveTranslationRuntime& runtime);

} // namespace tessarune::CommittedTranslationRunPreparer
