#pragma once

#include "Tessarune/shell/AppSettings.h"

#include <string>

namespace tessarune {

/// The settings that translation depends on, as they are at one moment. Taken afresh at each use:
/// whoever holds one across a suspension holds the past.
struct LiveTranslationSettingsSnapshot {
    std::string translationBackend;
    std::string translationTargetLanguage;

    bool operator==(const LiveTranslationSettingsSnapshot&) const = default;

    static LiveTranslationSettingsSnapshot current(const AppSettings& settings) {
        return {*settings.translationBackend, *settings.translationTargetLanguage};
    }
};

} // namespace tessarune
