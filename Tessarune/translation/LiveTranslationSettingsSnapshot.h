#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <string>
#include <utility>

namespace tessarune {

/// The settings that translation depends on, at one moment. Take a new one after each
/// `co_await`: the settings may have changed meanwhile.
struct LiveTranslationSettingsSnapshot {
    std::string translationBackend;
    std::string translationTargetLanguage;

    bool operator==(const LiveTranslationSettingsSnapshot&) const = default;

    static LiveTranslationSettingsSnapshot current(const AppSettings& settings) {
        return {*settings.translationBackend, *settings.translationTargetLanguage};
    }
};

/// The language pair of one run of translations, fixed when the run starts.
struct TranslationRunContext {
    std::string target;
    std::string sourceLanguage;
    /// The target is the language of the source: the source text itself is shown as the
    /// translation, and the translator is not used.
    bool passThrough = false;

    bool operator==(const TranslationRunContext&) const = default;

    /// The context for a translation from the default source language into `target`.
    static TranslationRunContext forTarget(std::string target) {
        const std::string source(TranslationSupport::defaultSourceLanguage);
        const bool passThrough = TranslationSupport::isSameLanguageTarget(target, source);
        return {std::move(target), source, passThrough};
    }
};

} // namespace tessarune
