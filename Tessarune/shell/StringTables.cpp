#include "Tessarune/shell/StringTables.h"

#include "TessaruneCore/text/Text.h"

#include <cstdlib>
#include <sstream>

namespace tessarune::StringTables {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// The language of a locale, named like the files in po/. The name includes the region only if po/
/// has a file for the region. po/ may have no file for the name.
std::string languageOf(std::string_view locale) {
    const std::string name = Text::lowercased(locale);
    if (name.starts_with("zh")) {
        for (const char* traditional : {"tw", "hk", "mo", "hant"}) {
            if (name.find(traditional) != std::string::npos)
                return "zh_TW";
        }
        return "zh_CN";
    }
    std::string full(locale.substr(0, locale.find_first_of(".@")));
    return rows(full).empty() ? full.substr(0, full.find('_')) : full;
}

/// The first language of the list for which the program has texts; if it has texts for none of
/// them, the first language of the list.
std::string bestOf(const std::string& languages) {
    std::istringstream all(languages);
    for (std::string language; std::getline(all, language, ':');) {
        if (!rows(languageOf(language)).empty())
            return language;
    }
    return languages.substr(0, languages.find(':'));
}

} // namespace

LocalizationTable forLocale(std::string_view locale) {
    LocalizationTable table;
    const auto add = [&](std::string_view language) {
        for (const auto& [key, text] : rows(language))
            table.insert_or_assign(std::string(key), std::string(text));
    };
    const std::string language = languageOf(locale);
    // A text that a table lacks is shown in English. Chinese readers see its key instead, which is
    // Chinese or English.
    if (!language.starts_with("zh"))
        add("en");
    add(language);
    return table;
}

std::string userLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const std::string locale = variable(name);
        if (locale.empty())
            continue;
        const bool isLanguage = locale != "C" && !locale.starts_with("C.") && locale != "POSIX";
        const std::string languages = isLanguage ? variable("LANGUAGE") : "";
        return languages.empty() ? locale : bestOf(languages);
    }
    return "C";
}

} // namespace tessarune::StringTables
