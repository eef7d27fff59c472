#include "Tessarune/shell/StringTables.h"

#include "TessaruneCore/text/Text.h"

#include <cstdlib>
#include <string>

namespace tessarune::StringTables {

LocalizationTable forLocale(std::string_view locale) {
    const std::string name = Text::lowercased(locale);
    if (!name.starts_with("zh"))
        return english();
    for (const char* traditional : {"tw", "hk", "mo", "hant"}) {
        if (name.find(traditional) != std::string::npos)
            return traditionalChinese();
    }
    return simplifiedChinese();
}

std::string_view userLocale() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && *value)
            return value;
    }
    return "C";
}

} // namespace tessarune::StringTables
