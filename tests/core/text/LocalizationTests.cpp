#include "TessaruneCore/text/Localization.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(LocalizationTests, FillsPlaceholdersAndUsesTheKeyForAMissingText) {
    setLocalizationTable({{"翻译失败：%@", "Translation failed: %@"}});
    EXPECT_EQ(localized("翻译失败：%@", {"100%@"}), "Translation failed: 100%@");
    EXPECT_EQ(localized("还有 %lld 句，%@ → %@", {"3", "en", "zh", "more"}), "还有 3 句，en → zh");
    EXPECT_EQ(localized("%@ → %@", {"en"}), "en → %@");
    EXPECT_EQ(localized("50%"), "50%");
    EXPECT_EQ(bothSentences("One.", "Two."), "One. Two.");
    EXPECT_EQ(bothSentences("", "Two."), "Two.");
    setLocalizationTable({});
    EXPECT_EQ(localized("翻译失败：%@"), "翻译失败：%@");
}

} // namespace
} // namespace tessarune
