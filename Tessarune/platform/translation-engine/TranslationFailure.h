#pragma once

#include "Tessarune/translation/TranslationService.h"

#include <string>

namespace tessarune {

/// Creates an error of the translation service with a text for the user.
inline TranslationServiceError translationFailure(TranslationError kind, const std::string& text) {
    return {kind, LocalizedError(text, "Tessarune.Translation", static_cast<int>(kind) + 1)};
}

} // namespace tessarune
