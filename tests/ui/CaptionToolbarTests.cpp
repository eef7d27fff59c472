#include "Tessarune/ui/captions/MenuWindow.h"
#include "tests/ui/StagedCaptions.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>

namespace tessarune {
namespace {

using Kind = SessionStatus::Kind;

class CaptionToolbarTests : public WarningsFail {
  protected:
    CaptionToolbarTests() { captions.open(); }

    StagedCaptions captions;
};

TEST_F(CaptionToolbarTests, AButtonSaysWhatItDoesWhileThePointerRestsOnIt) {
    QQuickWindow& window = captions.window->window();
    const auto hintShows = [&] {
        return std::ranges::any_of(window.findChildren<QQuickItem*>("hint"),
                                   [](const QQuickItem* hint) { return hint->isVisible(); });
    };
    QTest::mouseMove(&window, {200, 200});
    QTest::mouseMove(&window, {window.width() - 27, 24}); // the button that closes the window
    EXPECT_TRUE(runUntil(hintShows));
    QTest::mouseMove(&window, {200, 200});
    EXPECT_TRUE(runUntil([&] { return !hintShows(); }));
}

TEST_F(CaptionToolbarTests, HidesWithoutThePointerAndReturnsForTheKeyboard) {
    QQuickWindow& window = captions.window->window();
    const auto shows = [&] {
        return window.property("model").value<CaptionWindowModel*>()->showsChrome();
    };
    ASSERT_TRUE(runUntil([&] { return window.isActive() && !shows(); }));
    QTest::keyClick(&window, Qt::Key_Tab);
    EXPECT_TRUE(shows());
    runFor(300);
    QTest::keyClick(&window, Qt::Key_Tab);
    runFor(3200); // longer than an unused toolbar stays visible
    EXPECT_TRUE(shows()) << "a focused button keeps the toolbar visible";
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(runUntil([&] { return !shows(); }));
}

TEST_F(CaptionToolbarTests, AFileIsNamedAsTheSourceAndAnotherSourceCanBeChosen) {
    const auto* const toolbar =
        captions.window->window().property("toolbar").value<CaptionToolbarModel*>();
    captions.soundName = std::string("talk.mp3");
    EXPECT_EQ(toolbar->sourceName(), "talk.mp3");
    EXPECT_EQ(captions.window->stage().emptySubtitle(), "talk.mp3");
    EXPECT_EQ(toolbar->currentSource(), -1);
    toolbar->selectSource(0);
    EXPECT_EQ(captions.asked, std::vector<std::string>{"systemAudio"});
    EXPECT_EQ(toolbar->toggleText(), "开始字幕");
    captions.waiting = std::string("Waiting for a pipe.");
    EXPECT_EQ(toolbar->toggleText(), "停止字幕") << "the button cancels a start that waits";
    EXPECT_EQ(captions.window->stage().emptyTitle(), "Waiting for a pipe.");
    QSignalSpy changed(toolbar, &CaptionToolbarModel::sessionChanged);
    captions.settle("Said before.");
    captions.publish();
    EXPECT_TRUE(toolbar->showsStatus() && changed.size() == 1) << "captions hide the empty stage";

    captions.window.reset();
    captions.otherWayToTop = "Alt+Space"; // programs cannot keep their windows on top
    captions.open();
    const CaptionCommandsModel& commands = captions.window->commands();
    QStringList texts;
    for (int i = 0; i < commands.rowCount(); ++i)
        texts << commands.index(i).data(CaptionCommandsModel::TextRole).toString();
    EXPECT_EQ(texts.filter("Alt+Space").size(), 1)
        << "the menu names the keys with which the desktop does it";
    commands.choose(static_cast<int>(texts.indexOf("关于 Tessarune")));
    EXPECT_EQ(captions.asked.back(), "settings about");
}

TEST_F(CaptionToolbarTests, AClickElsewhereOrAnotherWindowClosesTheListOfSources) {
    QQuickWindow& window = captions.window->window();
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    const auto isOpen = [&] { return window.property("menuOpen").toBool(); };
    const QPoint sources(200, 24);
    QTest::mouseClick(&window, Qt::LeftButton, {}, sources);
    ASSERT_TRUE(isOpen());
    QTest::mouseClick(&window, Qt::LeftButton, {}, {window.width() - 60, 300});
    EXPECT_FALSE(isOpen());
    QTest::mouseClick(&window, Qt::LeftButton, {}, sources);
    ASSERT_TRUE(isOpen());
    QWindow other;
    other.show();
    other.requestActivate();
    EXPECT_TRUE(runUntil([&] { return !isOpen(); }));
}

TEST_F(CaptionToolbarTests, TheToolbarFitsIntoAnyWindowAndTheMenuIsReachedToItsEnd) {
    captions.showAllButtons();
    const std::string name = "A headset with the name of its maker and of each of its channels";
    captions.session.inputDevices =
        std::vector<AudioInputDevices::Device>{{"headset", name, false}};
    captions.session.selectedSource = AudioSource::microphone("headset");
    captions.session.sessionDuration = 12'345.0;
    captions.enter(LiveSessionPhase::listening, Kind::none);
    QQuickWindow& window = captions.window->window();
    window.property("model").value<CaptionWindowModel*>()->setHovered(true);
    const QFont usual = QGuiApplication::font();
    QFont large = usual;
    large.setPixelSize(24);
    QList<QQuickItem*> buttons;
    const std::function<void(QQuickItem*)> collect = [&](QQuickItem* item) {
        if (item->isVisible() && item->activeFocusOnTab())
            buttons << item;
        std::ranges::for_each(item->childItems(), collect);
    };
    for (const QFont& font : {usual, large}) {
        QGuiApplication::setFont(font);
        for (const int width : {window.minimumWidth(), 520, 640, 790}) {
            window.resize(std::max(width, window.minimumWidth()), 180);
            runFor(50);
            buttons.clear();
            collect(window.contentItem());
            EXPECT_GE(buttons.size(), 4) << "at least start, source, menu and close";
            double end = 0;
            for (const auto* const button : std::as_const(buttons)) {
                EXPECT_GE(button->mapToScene({0, 0}).x(), end) << "overlap at width " << width;
                end = button->mapToScene({button->width(), 0}).x();
            }
            EXPECT_LE(end, window.width());
        }
        EXPECT_EQ(captions.window->stage().sourceFont().pixelSize(), font == usual ? 24 : 38);
    }
    QGuiApplication::setFont(usual);

    window.resize(380, 180);
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    QTest::mouseClick(&window, Qt::RightButton, {}, {200, 100});
    auto* const menu = window.findChild<QQuickItem*>("contextMenu")->findChild<MenuWindow*>();
    auto* const entries = menu->findChild<QQuickItem*>("menu");
    EXPECT_GE(entries->height(), entries->property("contentHeight").toDouble());
    EXPECT_TRUE(menu->screen()->availableGeometry().contains(menu->geometry()));
    runFor(50);
    QTest::mouseClick(menu, Qt::LeftButton, {}, {60, menu->height() - 12}); // the last entry
    EXPECT_EQ(captions.asked.back(), "quit");
    EXPECT_FALSE(menu->isVisible());
    QTest::mouseClick(&window, Qt::RightButton, {}, {200, 100});
    EXPECT_LT(entries->width(), menu->width()) << "a menu that opens again keeps its margins";

    entries->setProperty("currentIndex", entries->property("count").toInt() - 1);
    captions.session.inputDevices = std::vector<AudioInputDevices::Device>(8, {"x", "X", false});
    EXPECT_TRUE(runUntil(
        [&] { return entries->height() >= entries->property("contentHeight").toDouble(); }));
    EXPECT_GT(entries->property("count").toInt(), 15);
    EXPECT_TRUE(menu->screen()->availableGeometry().contains(menu->geometry()));
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(captions.asked, (std::vector<std::string>{"refresh", "quit", "refresh", "quit"}))
        << "the last entry stays current when devices are added";

    captions.session.inputDevices = std::vector<AudioInputDevices::Device>(50, {"x", "X", false});
    QTest::mouseClick(&window, Qt::RightButton, {}, {200, 100});
    QTest::keyClick(&window, Qt::Key_End);
    QTest::mouseMove(menu, {60, 40});
    runFor(100);
    const auto* const entry = entries->property("currentItem").value<QQuickItem*>();
    EXPECT_TRUE(entry->contains(entry->mapFromScene({60, 40})));
    const int pointed = entries->property("currentIndex").toInt();
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&window, Qt::Key_Up);
        runFor(50);
    }
    EXPECT_EQ(entries->property("currentIndex"), pointed - 3) << "the resting pointer is ignored";
}

} // namespace
} // namespace tessarune
