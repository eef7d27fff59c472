#include "Terminal/TranslationChoice.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(TranslationChoiceTests, ARunTranslatesWhatItCanAndSaysWhatItCannot) {
    using Status = TranslationAvailabilityStatus;
    const std::vector<TranslationLanguageState> languages = {
        {"zh-Hans", Status::supported, 0, false, ""},
        {"pt-BR", Status::installed, 17, false, ""},
        {"fr", Status::supported, 17, true, "a file is missing"},
        {"th", Status::unsupported, 0, false, ""}};
    const struct {
        const char* backend;
        const char* settingsTarget;
        std::optional<std::string> wanted;
        const char* target;
        const char* notice;  ///< empty: says nothing; else what it mentions
        const char* failure; ///< the same
    } cases[] = {
        {"苹果", "zh-Hans", {}, "", "--languages download zh-Hans", ""},
        {"苹果", "pt-BR", {}, "pt-BR", "", ""},
        {"关闭", "pt-BR", {}, "", "", ""},
        {"Google", "pt-BR", {}, "", "Google", ""},
        {"苹果", "en", {}, "", "", ""},
        {"苹果", "zh-Hans", "", "", "", ""},
        {"关闭", "zh-Hans", "pt-BR", "pt-BR", "", ""},
        {"苹果", "pt-BR", "zh-Hans", "", "", "--languages download zh-Hans"},
        {"苹果", "pt-BR", "fr", "", "", "damaged: a file is missing"},
        {"苹果", "pt-BR", "th", "", "", "no model"},
        {"苹果", "xx", {}, "", "no model", ""},
    };
    for (const auto& c : cases) {
        const auto choice = chooseTranslation({c.backend, c.settingsTarget}, c.wanted, languages);
        const std::string about = std::string(c.settingsTarget) + " " + c.wanted.value_or("-");
        EXPECT_EQ(choice.target, c.target) << about;
        for (const auto& [said, expected] :
             {std::pair(choice.notice, c.notice), std::pair(choice.failure, c.failure)}) {
            EXPECT_EQ(said.empty(), std::string(expected).empty()) << about << ": " << said;
            EXPECT_NE(said.find(expected), std::string::npos) << about << ": " << said;
        }
    }
}

} // namespace
} // namespace tessarune
