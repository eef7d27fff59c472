#pragma once

#include "TessaruneCore/text/Localization.h"

#include <string_view>

/// The fixed texts in the languages that the program speaks. The keys are the Chinese literals of
/// the code, which are Simplified Chinese themselves; a text that a table lacks shows as its key.
namespace tessarune::StringTables {

LocalizationTable english();
LocalizationTable traditionalChinese();
/// Replaces only the texts that name what a Linux desktop does not have.
LocalizationTable simplifiedChinese();

/// The table for a locale as the environment names it ("zh_TW.UTF-8", "de_DE", "C"): one of the two
/// Chinese ones, else English.
LocalizationTable forLocale(std::string_view locale);

/// The user's locale for messages: LC_ALL, LC_MESSAGES or LANG, the first that is set.
std::string_view userLocale();

} // namespace tessarune::StringTables
