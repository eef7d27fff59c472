#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "Tessarune/translation/TranslationLanguages.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Decides about translation in one run of the terminal. Captions never depend on it: an
/// unavailable choice of the settings is reported once and skipped; one of the command line is a
/// failure before the run begins.
struct TranslationChoice {
    std::string target;  ///< empty: nothing is translated
    std::string notice;  ///< for the user, once; may be empty
    std::string failure; ///< why the run cannot begin; empty: it can
    /// The missing download, if that is the only obstacle.
    std::optional<TranslationLanguageState> missing;

    bool operator==(const TranslationChoice&) const = default;
};

/// `wanted` comes from the command line: a language, empty for none, absent for the settings'.
TranslationChoice chooseTranslation(const LiveTranslationSettingsSnapshot& settings,
                                    const std::optional<std::string>& wanted,
                                    const std::vector<TranslationLanguageState>& languages);

/// "zh-Hans (中文（中国大陆）)".
std::string languageName(const std::string& id);

/// Says that there is no model for the language, and what to do.
std::string noTranslationModelText(const std::string& id);

/// Says that the model for the language is damaged, how, and which command repairs it.
std::string damagedModelText(const std::string& id, const std::string& damage);

/// "38.2 MB"; a range if the size is unknown.
std::string downloadSize(std::uint64_t bytes);

} // namespace tessarune
