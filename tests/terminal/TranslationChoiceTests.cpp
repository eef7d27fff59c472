#include "Terminal/DownloadProgress.h"
#include "Terminal/TranslationChoice.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(TranslationChoiceTests, ASessionTranslatesOrSaysWhyItCannot) {
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
        const char* notice;  ///< empty: no notice; else a part of it
        const char* failure; ///< the same
    } cases[] = {
        {"苹果",
         "zh-Hans",
         {},
         "",
         "(20 to 60 MB): tessarune-terminal --languages download zh-Hans",
         ""},
        {"苹果", "pt-BR", {}, "pt-BR", "", ""},
        {"关闭", "pt-BR", {}, "", "", ""},
        {"Google", "pt-BR", {}, "", "Google", ""},
        {"苹果", "en", {}, "", "", ""},
        {"苹果", "zh-Hans", "", "", "", ""},
        {"关闭", "zh-Hans", "pt-BR", "pt-BR", "", ""},
        {"苹果", "pt-BR", "zh-Hans", "", "", "--languages download zh-Hans"},
        {"苹果", "pt-BR", "fr", "", "",
         "damaged (a file is missing). To download it again: tessarune-terminal --languages "
         "download "
         "fr"},
        {"苹果", "pt-BR", "th", "", "", "no translation model"},
        {"苹果", "xx", {}, "", "no translation model", ""},
    };
    for (const auto& c : cases) {
        const auto choice = chooseTranslation({c.backend, c.settingsTarget}, c.wanted, languages);
        const std::string about = std::string(c.settingsTarget) + ", " + c.wanted.value_or("-");
        EXPECT_EQ(choice.target, c.target) << about;
        const bool isOffered =
            std::string(c.notice + std::string(c.failure)).find("download") != std::string::npos;
        EXPECT_EQ(choice.missing.has_value(), isOffered) << about;
        for (const auto& [said, expected] :
             {std::pair(choice.notice, c.notice), std::pair(choice.failure, c.failure)}) {
            EXPECT_EQ(said.empty(), std::string(expected).empty()) << about << ": " << said;
            EXPECT_NE(said.find(expected), std::string::npos) << about << ": " << said;
        }
    }
}

TEST(DownloadPercentTests, EachPercentIsReportedOnce) {
    int heard = 0;
    DownloadPercent percent(1);
    for (std::uint64_t received = 0; received <= 40'000'000; received += 10'000)
        heard += percent.isNews(received, 40'000'000) ? 1 : 0;
    EXPECT_EQ(heard, 101); // 0 % to 100 %
    EXPECT_FALSE(percent.isNews(40'000'000, 40'000'000));
}

} // namespace
} // namespace tessarune
