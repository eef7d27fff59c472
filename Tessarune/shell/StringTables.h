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
/// the language and region. If there are none, it has those for the language. Missing texts are
/// English. But a Chinese locale has only the texts in its script; a missing one is shown as its
/// key.
LocalizationTable forLocale(std::string_view locale);

/// The user's locale for messages: the first of LC_ALL, LC_MESSAGES and LANG that is set, or "C".
/// Unless this is "C", "C.…" or "POSIX", the list LANGUAGE takes precedence: its first language
/// that the program has texts for or, without such a language, its first one.
std::string userLocale();

} // namespace tessarune::StringTables
