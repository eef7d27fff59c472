#pragma once

#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/text/Localization.h"

#include <string>

namespace tessarune {

/// Creates an error of the translation service with a text for the user.
inline TranslationServiceError translationFailure(TranslationError kind, const std::string& text) {
    return {kind, LocalizedError(text, "Tessarune.Translation", static_cast<int>(kind) + 1)};
}

/// The error for a model that is not in the store.
inline TranslationServiceError modelNotInstalled(const std::string& modelName) {
    return translationFailure(
        TranslationError::notInstalled,
        localized("The translation model %@ is not on this computer.", {modelName}));
}

} // namespace tessarune
