#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "Tessarune/translation/TranslationLanguages.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The decision about translation in one run of the terminal. If the target of the settings is
/// unavailable, the captions begin without translation, and the user is told once. If the target of
/// the command line is unavailable, the run fails before it begins.
struct TranslationChoice {
    std::string target;  ///< empty: nothing is translated
    std::string notice;  ///< to report to the user once; may be empty
    std::string failure; ///< why the run cannot begin; empty: it can
    /// The language to download, if its missing or damaged model is the obstacle.
    std::optional<TranslationLanguageState> missing;

    bool operator==(const TranslationChoice&) const = default;
};

/// `wanted` is the target on the command line: a language; empty: no translation; absent: the
/// settings decide.
TranslationChoice chooseTranslation(const LiveTranslationSettingsSnapshot& settings,
                                    const std::optional<std::string>& wanted,
                                    const std::vector<TranslationLanguageState>& languages);

/// The ID and the name for people: "zh-Hans (中文（中国大陆）)".
std::string languageName(const std::string& id);

/// Says that there is no model for the language, and what to do.
std::string noTranslationModelText(const std::string& id);

/// Says that the model for the language is damaged, how, and which command repairs it.
std::string damagedModelText(const std::string& id, const std::string& damage);

/// "38.2 MB"; a range if the size is unknown.
std::string downloadSize(std::uint64_t bytes);

} // namespace tessarune
