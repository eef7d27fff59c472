#pragma once

#include "Tessarune/translation/TranslationService.h"

#include <string>

namespace tessarune {

/// Makes a failure of the translation service of this kind, with a text that can be shown.
inline TranslationServiceError translationFailure(TranslationError kind, const std::string& text) {
    return {kind, LocalizedError(text, "Tessarune.Translation", static_cast<int>(kind) + 1)};
}

} // namespace tessarune
