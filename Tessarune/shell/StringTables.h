#pragma once

#include "TessaruneCore/text/Localization.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

/// The fixed texts in the languages of po/, compiled into the program and independent of the
/// system's locales. A text without an entry is shown as its key.
namespace tessarune::StringTables {

/// A key and its text.
using Row = std::pair<std::string_view, std::string_view>;

/// The rows of po/<language>.po; empty if there is no such file. `scripts/texts` generates the
/// source file that defines this function.
std::span<const Row> rows(std::string_view language);

/// The table for a locale from the environment ("zh_TW.UTF-8", "de_DE", "C"). It has the texts for
/// the language and region of the locale or, if po/ has none, for the language alone. The English
/// text replaces a missing one, except in a Chinese locale: there the key is shown.
LocalizationTable forLocale(std::string_view locale);

/// The user's locale for messages: the first of LC_ALL, LC_MESSAGES and LANG that is set, or "C".
/// If this locale is not "C", "C.…" or "POSIX", the list in LANGUAGE takes precedence. In this
/// case, returns the first language of the list for which the program has texts; if it has texts
/// for none of them, returns the first language of the list.
std::string userLocale();

} // namespace tessarune::StringTables
