#include "tests/ui/StagedWelcome.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QScreen>

namespace tessarune {
namespace {

class WelcomeWindowTests : public WarningsFail {
  protected:
    WelcomeWindowTests() { page.open(); }

    StagedWelcome page;
};

TEST_F(WelcomeWindowTests, SaysWhatIsDownloadedAndThenShowsCaptionsOfTheSample) {
    WelcomeModel& model = page.model();
    EXPECT_TRUE(model.downloads().contains("44")) << "the speech model's megabytes";
    for (const bool succeeds : {false, true}) {
        page.press("begin");
        EXPECT_TRUE(runUntil([&] { return model.progress() == 30.0 / 78; }));
        EXPECT_EQ(model.stage(), "download");
        EXPECT_EQ(model.downloadText(), "正在下载…");
        page.downloadTrouble = "No network.";
        EXPECT_EQ(model.downloadText(), "No network.");
        page.models.succeeds.resume(succeeds);
        ASSERT_TRUE(runUntil([&] { return model.stage() != "download"; }));
        EXPECT_EQ(model.stage(), succeeds ? "sample" : "ask");
        EXPECT_EQ(model.problem(), succeeds ? "" : "The disk is full.");
        EXPECT_EQ(page.samples, succeeds ? 1 : 0);
        page.models.succeeds = OneShot<bool>(Executor::main(page.captions.host));
    }
    page.captions.settle("Said.", "说过。");
    page.captions.publish();
    const auto* const list = page.window->window().findChild<QQuickItem*>("sourceList");
    EXPECT_TRUE(runUntil([&] {
        return list->isVisible() &&
               list->findChild<QQuickItem*>("list")->property("count").toInt() == 1;
    }));
    page.press("begin"); // the same button now says that the user is done
    EXPECT_EQ(page.closed, 1);
}

TEST_F(WelcomeWindowTests, DownloadsTheTranslationModelEvenIfTheSampleCannotBePlayed) {
    page.sampleProblem = "There is no sample.";
    page.model().setLanguage(2);
    EXPECT_TRUE(page.model().downloads().contains("最多 60")) << "the largest size of any model";
    page.models.succeeds.resume(true);
    page.press("begin");
    ASSERT_TRUE(runUntil([&] { return page.languages.downloads == 1; }));
    EXPECT_EQ(page.model().problem(), "There is no sample.");
    page.press("begin"); // the same button now says that the user is done
    EXPECT_EQ(page.closed, 1);
}

TEST_F(WelcomeWindowTests, ShowsTheSampleAtOnceIfNothingHasToBeDownloaded) {
    page.models.models.front().isInstalled = true;
    page.captions.settings.translationTargetLanguage = page.languages.list()[13].id; // unsupported
    page.open();
    EXPECT_TRUE(runUntil([&] { return page.model().stage() == "sample"; }));
    EXPECT_EQ(*page.captions.settings.translationBackend, "苹果")
        << "no setting changes unless the user confirms it";
}

TEST_F(WelcomeWindowTests, SkippingItDownloadsNothingAndChangesNoSetting) {
    page.model().setLanguage(0);
    page.press("skip");
    EXPECT_EQ(page.closed, 1);
    EXPECT_EQ(page.model().stage(), "ask");
    EXPECT_EQ(*page.captions.settings.translationTargetLanguage, "zh-Hans")
        << "a language that is not confirmed is not stored";
}

TEST_F(WelcomeWindowTests, FitsOnTheScreenWithItsFrameEvenWithLargeText) {
    const QFont usual = QGuiApplication::font();
    QFont large = usual;
    large.setPixelSize(24);
    QGuiApplication::setFont(large);
    const QQuickWindow& window = page.window->window();
    EXPECT_TRUE(runUntil(
        [&] { return window.frameGeometry().size() == window.screen()->availableSize(); }));
    QGuiApplication::setFont(usual);
}

TEST_F(WelcomeWindowTests, DoesNothingMoreOnceItIsClosed) {
    AppSettings& settings = page.captions.settings;
    page.model().setLanguage(8);
    page.press("begin");
    EXPECT_EQ(*settings.translationTargetLanguage, "pt-BR") << "the user confirmed it";
    ASSERT_TRUE(runUntil([&] { return page.model().isDownloading(); }));
    page.window->close();
    settings.translationTargetLanguage = "zh-Hans"; // chosen elsewhere meanwhile
    page.models.succeeds.resume(true);              // the download ends nevertheless
    ASSERT_TRUE(runUntil([&] { return !page.window->isRunning(); }));
    EXPECT_EQ(page.samples, 0);
    EXPECT_EQ(*settings.translationTargetLanguage, "zh-Hans");
}

} // namespace
} // namespace tessarune
