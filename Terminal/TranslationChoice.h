#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "Tessarune/translation/TranslationLanguages.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// What becomes of translation in one run of the terminal. Captions never depend on it: what the
/// settings want and cannot have is said once and left out; what the command line asks for and
/// cannot have is a failure before anything begins.
struct TranslationChoice {
    std::string target;  ///< empty: nothing is translated
    std::string notice;  ///< for the user, once; may be empty
    std::string failure; ///< why the run cannot begin; empty: it can
    /// What a download would bring, where it is only that which is missing.
    std::optional<TranslationLanguageState> missing;

    bool operator==(const TranslationChoice&) const = default;
};

/// `wanted` is that of the command line: a language, empty for none, absent for the settings'.
TranslationChoice chooseTranslation(const LiveTranslationSettingsSnapshot& settings,
                                    const std::optional<std::string>& wanted,
                                    const std::vector<TranslationLanguageState>& languages);

/// "zh-Hans (中文（中国大陆）)".
std::string languageName(const std::string& id);

/// That there is no model for the language, and what to do.
std::string noTranslationModelText(const std::string& id);

/// That the model for the language is damaged, how, and which command repairs it.
std::string damagedModelText(const std::string& id, const std::string& damage);

/// "38.2 MB"; a range while the size is unknown.
std::string downloadSize(std::uint64_t bytes);

} // namespace tessarune
