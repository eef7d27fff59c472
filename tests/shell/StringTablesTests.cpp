#include "Tessarune/shell/StringTables.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tessarune {
namespace {

TEST(StringTablesTests, TheEnvironmentChoosesTheLanguageAndUnknownOnesAreEnglish) {
    const struct {
        const char* languages;
        const char* locale;
        std::string text; // empty: the key itself, which is simplified Chinese
    } cases[] = {
        {"", "zh_TW.UTF-8", "系統聲音"},   {"", "zh_Hant_HK", "系統聲音"},
        {"", "zh_CN.UTF-8", ""},           {"", "zh", ""},
        {"", "de_DE", "System sound"},     {"", "C", "System sound"},
        {"zh_TW:en", "de_DE", "系統聲音"}, {"zh_TW", "C.UTF-8", "System sound"},
        {"xx:zh_TW", "de_DE", "系統聲音"},
    };
    const std::string key = "系统声音";
    for (const auto& it : cases) {
        ::setenv("LC_ALL", it.locale, 1);
        ::setenv("LANGUAGE", it.languages, 1);
        auto table = StringTables::forLocale(StringTables::userLocale());
        EXPECT_EQ(table[key], it.text) << it.languages << " " << it.locale;
    }
    ::unsetenv("LC_ALL");
    ::unsetenv("LANGUAGE");
}

} // namespace
} // namespace tessarune
