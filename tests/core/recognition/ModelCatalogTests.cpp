#include "TessaruneCore/recognition/ModelCatalog.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(ModelCatalogTests, AnUnknownStoredIDFallsBackToTheDefault) {
    EXPECT_EQ(ModelCatalog::normalizedRecognitionOptionID("apple-analyzer-en-za"),
              "apple-analyzer-en-za");
    EXPECT_EQ(ModelCatalog::normalizedRecognitionOptionID("apple-analyzer-de"),
              ModelCatalog::defaultRecognitionOptionID);
}

TEST(ModelCatalogTests, ChineseIsMeasuredInCharacters) {
    // Only the first two letters count, so "zha" (Zhuang) is measured in characters, too.
    const std::pair<const char*, bool> cases[] = {
        {"zh", true},     {"ZH-Hant-TW", true}, {"zha-CN", true},
        {"en-ZH", false}, {"z", false},         {"", false},
    };
    for (const auto& [locale, isChinese] : cases) {
        RecognitionOption option;
        option.localeIdentifier = locale;
        option.engine = RecognitionEngine::appleAnalyzer(locale);
        const auto capabilities = option.capabilities();
        EXPECT_EQ(capabilities.boundaryUnit,
                  isChinese ? BoundaryUnit::characters : BoundaryUnit::words)
            << locale;
        EXPECT_EQ(capabilities.maxUnpunctuatedUnits, isChinese ? 48 : 28) << locale;
        EXPECT_TRUE(capabilities.selfSegments) << locale;
    }
    EXPECT_EQ(boundaryUnit("characters"), BoundaryUnit::characters);
    EXPECT_FALSE(boundaryUnit("letters"));
}

} // namespace
} // namespace tessarune
