#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/ui/captions/CaptionFollow.h"
#include "Tessarune/ui/captions/MenuWindow.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/ui/CaptionWindowFixture.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QClipboard>
#include <QQuickItem>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

namespace tessarune {
namespace {

using Kind = SessionStatus::Kind;

class CaptionWindowTests : public CaptionWindowFixture {};

TEST_F(CaptionWindowTests, AFrameUpdatesOnlyTheRowsThatItChanges) {
    CaptionRowsModel& rows = *captions.window->stage().rows();
    for (int i = 0; i < 500; ++i)
        captions.settle("Sentence " + std::to_string(i) + ".");
    captions.speak("and");
    captions.publish();
    ASSERT_EQ(rows.rowCount(), 501);
    QSignalSpy inserted(&rows, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&rows, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(&rows, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&rows, &QAbstractItemModel::dataChanged);
    const auto changedRows = [&] {
        QList<int> all;
        for (const auto& arguments : changed)
            for (int i = arguments[0].toModelIndex().row(); i <= arguments[1].toModelIndex().row();
                 ++i)
                all << i;
        changed.clear();
        return all;
    };

    captions.speak("and so");
    captions.publish();
    EXPECT_EQ(changedRows(), QList<int>{500});
    captions.translate(3, "第三句。");
    captions.speak("and so on");
    captions.publish();
    EXPECT_EQ(changedRows(), (QList<int>{3, 500}));
    EXPECT_EQ(inserted.size(), 0);
    captions.settle("And so on."); // replaces the open row
    captions.speak("Now");
    captions.publish();
    EXPECT_EQ(changedRows(), QList<int>{500});
    ASSERT_EQ(inserted.size(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 501);
    EXPECT_EQ(inserted[0][2].toInt(), 501);
    EXPECT_EQ(removed.size() + reset.size(), 0);
}

TEST_F(CaptionWindowTests, ShowsWhyThereAreNoCaptions) {
    const CaptionStageModel& stage = captions.window->stage();
    struct Case {
        LiveSessionPhase phase;
        Kind status;
        const char* presentation;
    };
    for (const auto& [phase, status, presentation] :
         std::initializer_list<Case>{{LiveSessionPhase::idle, Kind::idle, "empty-idle"},
                                     {LiveSessionPhase::loading, Kind::checking, "empty-checking"},
                                     {LiveSessionPhase::listening, Kind::none, "empty-checking"},
                                     {LiveSessionPhase::stopping, Kind::silent, "empty-silent"},
                                     {LiveSessionPhase::stopping, Kind::saving, "clear"},
                                     {LiveSessionPhase::failed, Kind::none, "empty-idle"}}) {
        captions.enter(phase, status);
        captions.publish();
        EXPECT_EQ(stage.presentation().toStdString(), presentation);
        EXPECT_EQ(!stage.emptyRemedy().isEmpty(), status == Kind::silent);
        runFor(20);
    }
    // During a stop, the last words clear the status of the session, which is still being saved.
    captions.enter(LiveSessionPhase::stopping, Kind::none);
    const auto* const toolbar =
        captions.window->window().property("toolbar").value<CaptionToolbarModel*>();
    EXPECT_TRUE(toolbar->showsStatus());
    EXPECT_FALSE(toolbar->status().isEmpty());
    EXPECT_TRUE(toolbar->statusRemedy().isEmpty());
    captions.session.startFailure =
        std::make_exception_ptr(LocalizedError("Refused.", RecognitionPermissionGate::errorDomain,
                                               RecognitionPermissionGate::microphoneRefused));
    captions.enter(LiveSessionPhase::failed, Kind::none);
    EXPECT_FALSE(toolbar->statusRemedy().isEmpty());
    captions.session.presentedError = std::string("Refused.");
    EXPECT_EQ(toolbar->status(), "Refused.");
    captions.speak("Refused.");
    captions.publish();
    EXPECT_TRUE(toolbar->showsStatus() && toolbar->status().isEmpty()) << "only its button";
    captions.session.startFailure = nullptr;
    EXPECT_FALSE(toolbar->showsStatus());
    captions.speak("Hello");
    captions.publish();
    EXPECT_EQ(stage.presentation(), "content");
    captions.settings.translationBackend = "关闭"; // off: no translation is shown
    runFor(20);
    EXPECT_FALSE(stage.isBilingual());
}

TEST_F(CaptionWindowTests, AClickOnTheEmptyStageStartsCaptions) {
    auto& keyCode = captions.settings.shortcutToggleRecord.keyCode;
    for (const auto& [code, title] :
         {std::pair{116, "点击开始，或按 PgUp"}, {0xFFFF, "点击开始"}}) { // no key
        keyCode = code;
        EXPECT_EQ(captions.window->stage().emptyTitle().toStdString(), title);
    }
    QQuickWindow& window = captions.window->window();
    QTest::mousePress(&window, Qt::LeftButton, {}, {200, 150});
    QTest::mouseMove(&window, {240, 150});
    QTest::mouseRelease(&window, Qt::LeftButton, {}, {240, 150});
    EXPECT_TRUE(captions.asked.empty()) << "a drag moves the window and starts nothing";
    captions.notice = CaptionNotice{"Something to read."};
    runFor(50);
    const auto* const notice = window.findChild<QQuickItem*>("notice");
    const QPoint onText = notice->mapToScene({30, notice->height() / 2}).toPoint();
    for (const QPoint point : {onText, QPoint(200, 46)}) // the toolbar, below its buttons
        QTest::mouseClick(&window, Qt::LeftButton, {}, point);
    EXPECT_TRUE(captions.asked.empty()) << "a click on a notice or the toolbar starts nothing";
    QTest::mouseClick(&window, Qt::LeftButton, {}, {200, 150});
    EXPECT_EQ(captions.asked, std::vector<std::string>{"toggle"});
}

TEST_F(CaptionWindowTests, KeepsTheNewestLineInSightUntilTheReaderScrollsBack) {
    for (int i = 0; i < 60; ++i) {
        captions.settle("A sentence that is long enough to need more than a single line of the "
                        "window, whatever its font is, so that rows differ in height " +
                            std::to_string(i) + ".",
                        i % 3 == 0 ? "译文" : "");
        captions.publish();
        runFor(5);
    }
    ASSERT_TRUE(runUntil([&] { return std::abs(hiddenBelow()) < 1; })) << hiddenBelow();
    EXPECT_EQ(std::ranges::count(captions.followed, "attached"), 1)
        << "only the visible layout's list follows the captions";

    const auto* const view = list()->parentItem();
    QMetaObject::invokeMethod(list(), "flick", Q_ARG(double, 0), Q_ARG(double, 2500)); // a wheel
    ASSERT_TRUE(runUntil([&] { return view->property("reviewing").toBool(); }));
    ASSERT_TRUE(runUntil([&] { return !list()->property("moving").toBool(); }));
    const double readingAt = list()->property("contentY").toDouble();
    captions.settle("Something new.");
    captions.publish();
    runFor(50);
    EXPECT_EQ(list()->property("contentY").toDouble(), readingAt);

    QMetaObject::invokeMethod(list()->parentItem(), "returnToNewest");
    EXPECT_TRUE(runUntil([&] { return std::abs(hiddenBelow()) < 1; })) << hiddenBelow();
    EXPECT_FALSE(view->property("reviewing").toBool());

    QQuickWindow& window = captions.window->window();
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    QTest::mouseClick(&window, Qt::RightButton, {}, {200, 150});
    QTest::keyClick(&window, Qt::Key_Escape); // closes the menu
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    QTest::keyClick(&window, Qt::Key_Up);
    EXPECT_TRUE(view->property("reviewing").toBool());
    QTest::keyClick(&window, Qt::Key_Down);
    EXPECT_FALSE(view->property("reviewing").toBool());
    QTest::keyClick(&window, Qt::Key_PageUp);
    EXPECT_GT(hiddenBelow(), 100);
    QTest::keyClick(&window, Qt::Key_End);
    EXPECT_TRUE(runUntil([&] { return std::abs(hiddenBelow()) < 1; })) << hiddenBelow();
}

TEST_F(CaptionWindowTests, TheKeysOfTheSettingsRunTheAvailableCommands) {
    QQuickWindow& window = captions.window->window();
    captions.session.hasVisibleSourceTextFlag = true;
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        captions.asked.clear();
        QTest::keyClick(&window, key, modifiers);
        return captions.asked;
    };
    using Asked = std::vector<std::string>;
    EXPECT_EQ(press(Qt::Key_Space, Qt::NoModifier), Asked{"toggle"});
    EXPECT_EQ(press(Qt::Key_E, Qt::ControlModifier), Asked{"clear"});
    for (int i = 0; i < 12 && window.activeFocusItem()->property("icon") != "pin"; ++i)
        QTest::keyClick(&window, Qt::Key_Tab);
    const bool wasOnTop = *captions.settings.keepOnTop;
    EXPECT_EQ(press(Qt::Key_Space, Qt::NoModifier), Asked{}) << "Space presses the focused button";
    EXPECT_NE(*captions.settings.keepOnTop, wasOnTop);
    EXPECT_EQ(press(Qt::Key_Return, Qt::NoModifier), Asked{});
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", true);
    QCoreApplication::sendEvent(&window, &repeated);
    EXPECT_EQ(*captions.settings.keepOnTop, wasOnTop) << "a held key presses once";
    window.contentItem()->forceActiveFocus();
    captions.settings.shortcutClear.keyCode = 117;       // Delete
    captions.settings.shortcutClear.modifiers = 0xA0000; // Alt and Shift
    EXPECT_EQ(press(Qt::Key_E, Qt::ControlModifier), Asked{});
    EXPECT_EQ(press(Qt::Key_Delete, Qt::AltModifier | Qt::ShiftModifier), Asked{"clear"});
    captions.settings.shortcutToggleRecord.keyCode = 0xFFFF; // switched off
    EXPECT_EQ(press(Qt::Key_Space, Qt::NoModifier), Asked{});
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Said.\n说过。");

    captions.session.hasVisibleSourceTextFlag = false;
    EXPECT_EQ(press(Qt::Key_Delete, Qt::AltModifier | Qt::ShiftModifier), Asked{});
    QTest::mouseClick(&window, Qt::RightButton, {}, {200, 150});
    const auto* const menu = window.findChild<QQuickItem*>("contextMenu");
    EXPECT_TRUE(menu->property("isOpen").toBool());
    auto* const entries = menu->findChild<MenuWindow*>()->findChild<QQuickItem*>("menu");
    const int last = entries->property("count").toInt() - 1;
    QTest::keyClick(&window, Qt::Key_Up);
    EXPECT_EQ(entries->property("currentIndex"), last);
    QTest::mouseMove(entries->window(), {60, entries->window()->height() / 2});
    EXPECT_TRUE(runUntil([&] { return entries->property("currentIndex").toInt() < last; }));
    QTest::keyClick(&window, Qt::Key_End);
    QTest::keyClick(&window, Qt::Key_Down);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(captions.asked, (Asked{"refresh", "toggle"})) << "opening it refreshes devices";
    EXPECT_FALSE(menu->property("isOpen").toBool());
}

TEST_F(CaptionWindowTests, WordsAlreadyShownAreNotStreamedAgain) {
    captions.settings.smoothStreaming = true;
    captions.settings.smoothPaceMS = 1'000'000; // only the first new word appears
    const auto markup = [&] {
        const auto* const row = newest();
        const auto* const item = row ? row->property("sourceItem").value<QQuickItem*>() : nullptr;
        return item ? item->property("text").toString() : QString();
    };
    const auto shown = [&] {
        return markup().remove(QRegularExpression("<[^>]*>")).trimmed().toStdString();
    };
    const auto becomes = [&](const std::string& text) {
        captions.publish();
        EXPECT_TRUE(runUntil([&] { return shown() == text; })) << shown();
        runFor(20);
        EXPECT_EQ(shown(), text);
    };
    captions.settle("Before.");
    captions.leave("And so on.");
    captions.speak("We went home");
    becomes("We");
    captions.frame.liveTailRows = {};
    captions.frame.mergedBilingualLiveTailRows = {};
    captions.speak("And so on we went home and slept"); // the first sentence is open again
    becomes("And so on we went");
    captions.leave("And so on.");
    captions.speak("We went home and");
    captions.publish(); // two updates before the window is drawn again
    captions.speak("We went home and slept");
    becomes("We went home");
    captions.frame.liveTailRows = {};
    captions.frame.mergedBilingualLiveTailRows = {};
    captions.settle("And so on.");
    captions.settle("We went home.");
    captions.speak("Another sentence");
    becomes("Another");
    EXPECT_TRUE(markup().contains("<font"));
    captions.settings.highlightChanges = false;
    EXPECT_TRUE(runUntil([&] { return !markup().contains("<font"); })) << "no highlight remains";
}

TEST_F(CaptionWindowTests, LinesCanBeSwappedAndReducedMotionAnimatesNothing) {
    captions.settings.swapCaptionOrder = true;
    captions.settings.smoothStreaming = true;
    captions.reducesMotion = true;
    captions.speak("And so on we went home");
    for (int i = 0; i < 20; ++i)
        captions.settle("Said.", "说过。");
    captions.publish();
    ASSERT_TRUE(runUntil([&] { return newest() && std::abs(hiddenBelow()) < 1; }));
    const auto itemOf = [&](const char* part) {
        return newest()->property(part).value<QQuickItem*>();
    };
    EXPECT_TRUE(itemOf("sourceItem")->property("text").toString().contains("home")) << "all words";
    EXPECT_LT(itemOf("translationItem")->y(), itemOf("sourceItem")->y());
    captions.settle("Something new.");
    captions.publish();
    runFor(50);
    EXPECT_EQ(list()->parentItem()->findChild<CaptionFollow*>()->glide(), 0);
}

TEST_F(CaptionWindowTests, TextIsSelectedAcrossRowsAndStaysSelectedWhileCaptionsArrive) {
    captions.settle("The first sentence.", "第一句。");
    captions.settle("The second sentence.", "第二句。");
    captions.publish();
    runFor(300);
    QQuickWindow& window = captions.window->window();
    const auto pointAt = [&](int row, const char* part, bool atEnd) {
        const auto* const text = rowAt(row)->property(part).value<QQuickItem*>();
        return text->mapToScene({atEnd ? text->implicitWidth() + 40 : 1, text->height() / 2})
            .toPoint();
    };
    const QPoint from = pointAt(0, "translationItem", false);
    const QPoint to = pointAt(1, "sourceItem", true);
    QTest::mousePress(&window, Qt::LeftButton, Qt::ShiftModifier, from);
    QTest::mouseMove(&window, to);
    QTest::mouseRelease(&window, Qt::LeftButton, Qt::ShiftModifier, to);
    captions.settle("The third sentence.");
    captions.speak("A fourth");
    captions.publish();
    captions.speak(""); // the open words are withdrawn
    captions.publish();
    ASSERT_TRUE(runUntil([&] { return window.isActive(); }));
    QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "第一句。\nThe second sentence.");
    captions.settings.mergeBilingualRows = true; // replaces the rows
    EXPECT_TRUE(runUntil(
        [&] { return captions.window->commands().property("selection").toString().isEmpty(); }));
    runFor(300);
    QTest::mouseDClick(&window, Qt::LeftButton, {}, pointAt(1, "sourceItem", false));
    QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "The");

    captions.frame.sourceTextTail = {};
    captions.frame.mergedBilingualSourceTail = {};
    captions.publish();
    captions.settle("Another.");
    captions.settle("And another.");
    captions.publish();
    captions.session.hasVisibleSourceTextFlag = true;
    QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Said.\n说过。") << "all captions are copied";
}

TEST_F(CaptionWindowTests, SaysWhyNoNewWordsCome) {
    const auto says = [&]() -> std::string {
        for (const auto* pill : captions.window->window().findChildren<QQuickItem*>("hearing")) {
            if (pill->isVisible())
                return pill->property("text").toString().toStdString();
        }
        return "";
    };
    captions.session.audioLevel = 0.5;
    captions.speak("Words");
    captions.enter(LiveSessionPhase::listening, Kind::none);
    captions.publish();
    EXPECT_EQ(says(), "");
    captions.secondsBehind = 12;
    EXPECT_TRUE(runUntil([&] { return says().find("12 s behind") != std::string::npos; }));
    captions.secondsBehind = 0;
    captions.session.audioLevel = 0;
    EXPECT_TRUE(runUntil([&] { return says() == "现在没有声音"; }));
    captions.speak("");
    captions.session.clearedSegmentIDs = std::unordered_set<UUID>{UUID::random()};
    captions.publish();
    EXPECT_EQ(captions.window->stage().presentation(), "clear");
    EXPECT_EQ(says().substr(0, 12), "正在收听");
    captions.settle("Words.");
    captions.enter(LiveSessionPhase::idle, Kind::idle);
    captions.publish();
    EXPECT_EQ(says(), "字幕已停止");
}

TEST_F(CaptionWindowTests, AMissingTranslationCanBeCompletedWhateverElseIsShown) {
    QQuickWindow& window = captions.window->window();
    window.resize(380, 180);
    captions.lacksModel = true;
    captions.settle("Not translated.");
    captions.frame.translationStatus = {
        std::string(TranslationSupport::languageResourceNotReadyMessage("de")), true, true};
    captions.enter(LiveSessionPhase::idle, Kind::transcriptNotSaved); // shows a message, too
    captions.publish();
    runFor(50);
    const auto press = [&](const char* action) {
        const auto* const pill = window.findChild<QQuickItem*>("translation");
        for (auto* const item : pill->findChildren<QQuickItem*>()) {
            if (item->property("text") == action)
                QTest::mouseClick(&window, Qt::LeftButton, {},
                                  item->mapToScene(item->boundingRect().center()).toPoint());
        }
        return !captions.asked.empty();
    };
    ASSERT_TRUE(runUntil([&] { return press("下载…"); }));
    captions.lacksModel = false; // another program has installed the model
    captions.asked.clear();
    EXPECT_TRUE(runUntil([&] { return press("补齐未完成译文"); }));
    EXPECT_EQ(captions.asked.front(), "retry");
    const CaptionStageModel& stage = captions.window->stage();
    EXPECT_EQ(stage.translationStatus(), "Some captions are not translated yet.");
    captions.lacksModel = true;
    captions.settings.translationTargetLanguage = "fr";
    EXPECT_EQ(stage.translationRemedy(), "下载…") << "the new target language has no model";
    captions.window.reset();
    captions.open();
    EXPECT_EQ(captions.window->stage().translationRemedy(), "下载…") << "offered at once";
}

TEST_F(CaptionWindowTests, AScreenReaderFindsCaptionsAsListItemsAndNamedButtons) {
    captions.settle("Said.", "说过。");
    captions.publish();
    runFor(50);
    QAccessible::setActive(true);
    ASSERT_TRUE(runUntil([&] {
        const auto* const toolbar = captions.window->window().findChild<QQuickItem*>("toolbar");
        return toolbar && toolbar->opacity() == 0;
    }));
    QStringList unnamed;
    QStringList named;
    QStringList captionsRead;
    const std::function<void(QAccessibleInterface*)> read = [&](QAccessibleInterface* item) {
        const QString name = item->text(QAccessible::Name);
        if (item->role() == QAccessible::ListItem)
            captionsRead << name;
        if (item->role() == QAccessible::Button && name.isEmpty())
            unnamed << item->object()->metaObject()->className();
        else if (item->role() == QAccessible::Button && !item->state().invisible)
            named << name;
        for (int i = 0; i < item->childCount(); ++i)
            read(item->child(i));
    };
    read(QAccessible::queryAccessibleInterface(&captions.window->window()));
    EXPECT_EQ(captionsRead, QStringList{"Said.\n说过。"});
    EXPECT_TRUE(named.contains("关闭字幕窗口")) << "the toolbar is hidden only from the eye";
    QAccessible::setActive(false);
    EXPECT_TRUE(unnamed.isEmpty()) << "buttons without a name: " << unnamed.join(' ').toStdString();
}

} // namespace
} // namespace tessarune
