#include "Tessarune/translation/TranslationTaskBridge.h"
#include "tests/translation/TranslatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::serviceError;
using Status = TranslationAvailabilityStatus;

struct TranslationTaskBridgeTests : ::testing::Test, testing::TranslatedSession {
    std::shared_ptr<TranslationTaskBridge> bridge = std::make_shared<TranslationTaskBridge>(
        TranslationTaskBridge::Environment{host, service, translation});
};

TEST_F(TranslationTaskBridgeTests, ReportsTheProgressAndResultOfAPairsTest) {
    struct Case {
        Status status;
        const char* failure;
        std::string result; // the status text at the end
    };
    const Case cases[] = {
        {Status::installed, nullptr, "测试成功"},
        {Status::supported, nullptr, "测试成功"},
        {Status::unsupported, nullptr, "不支持的翻译方向: en → fr"},
        {Status::supported, "offline", "测试失败：offline"},
        {Status::supported, "Unable to Translate",
         "测试失败：Apple 翻译语言资源暂未准备好。请确认 en-US → fr-FR 已完成下载，然后重试。"},
        {Status::supported, "Traduction impossible", "测试失败：Traduction impossible"},
    };
    for (const auto& c : cases) {
        auto& pair = service->pairs["en-US->fr-FR"];
        pair = {c.status, false, true, {2, std::nullopt}};
        if (c.failure)
            pair.preparation.error = serviceError(std::nullopt, c.failure);
        runtime->bigCleanup();
        bridge->runTranslationTest("fr");
        EXPECT_TRUE(*bridge->isTestingTranslation());
        host.advanceBy(1);
        EXPECT_EQ(*bridge->statusText(), c.status == Status::installed ? "正在翻译…"
                                         : c.status == Status::supported
                                             ? "正在打开 Apple 语言下载面板…"
                                             : c.result);
        host.advanceBy(10);
        EXPECT_EQ(*bridge->statusText(), c.result);
        EXPECT_EQ(*bridge->resultText(),
                  c.result == "测试成功"
                      ? "fr-FR:Every small step forward makes the next one easier."
                      : "");
        EXPECT_FALSE(*bridge->isTestingTranslation());
    }
}

TEST_F(TranslationTaskBridgeTests, ASuccessfulTestRetriesTheFailedRowsOfItsPair) {
    commit({"Warm up."});
    host.advanceBy(5);
    service->answers = {{0, serviceError(TranslationError::notInstalled)}};
    commit({"Hello."});
    host.advanceBy(5);
    ASSERT_TRUE(rows[1].translationError);

    bridge->runTranslationTest("de");
    host.advanceBy(5);
    EXPECT_TRUE(rows[1].translationError) << "a test of another pair must retry nothing";
    service->answers = {{3, std::nullopt}};
    bridge->runTranslationTest("ja");
    host.advanceBy(1);
    bridge->runTranslationTest("fr");
    host.advanceBy(1);
    EXPECT_EQ(*bridge->statusText(), "测试成功");
    EXPECT_EQ(rows[1].translatedText, "fr-FR:Hello.");
    host.advanceBy(5);
    EXPECT_EQ(bridge->resultText()->substr(0, 6), "fr-FR:") << "a superseded test must not report";
}

} // namespace
} // namespace tessarune
