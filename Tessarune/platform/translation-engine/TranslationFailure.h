#pragma once

#include "Tessarune/translation/TranslationService.h"

#include <string>

namespace tessarune {

/// A failure of the translation service by its name, with a text that can be shown.
inline TranslationServiceError translationFailure(TranslationError kind, const std::string& text) {
    return {kind, LocalizedError(text, "Tessarune.Translation", static_cast<int>(kind) + 1)};
}

} // namespace tessarune
