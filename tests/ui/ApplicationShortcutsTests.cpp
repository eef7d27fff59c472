#include "Tessarune/ui/captions/ShortcutKeys.h"
#include "Tessarune/ui/desktop/ApplicationShortcuts.h"
#include "Tessarune/ui/desktop/KeyRepeats.h"
#include "tests/ui/StagedCaptions.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QTest>
#include <optional>

namespace tessarune {
namespace {

/// A window with a focused item, to which a test gives properties.
struct OtherWindow : QWindow {
    QObject focus;
    QObject* focusObject() const override { return const_cast<QObject*>(&focus); }
};

class ApplicationShortcutsTests : public WarningsFail {
  protected:
    using Asked = std::vector<std::string>;

    ApplicationShortcutsTests() {
        captions.open();
        shortcuts.emplace(captions.window->commands());
        captions.session.hasVisibleSourceTextFlag = true;
        other.show();
    }
    void activate(QWindow& window) {
        window.requestActivate();
        EXPECT_TRUE(runUntil([&] { return window.isActive(); }));
        captions.asked.clear();
    }
    Asked press(QWindow& window, int key, Qt::KeyboardModifiers modifiers, quint32 scanCode = 0) {
        activate(window);
        for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
            QKeyEvent event(type, key, modifiers, scanCode, 0, 0);
            QCoreApplication::sendEvent(&window, &event);
        }
        return captions.asked;
    }

    StagedCaptions captions;
    std::optional<ApplicationShortcuts> shortcuts;
    OtherWindow other;
};

TEST_F(ApplicationShortcutsTests, AreTheSameInEveryWindow) {
    constexpr auto ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    for (ShortcutSetting* const setting :
         {&captions.settings.shortcutClear, &captions.settings.shortcutHistory}) {
        setting->keyCode = 18;         // 1, whose scan code is 10
        setting->modifiers = 0x120000; // Ctrl and Shift
    }
    for (QWindow* const window :
         {static_cast<QWindow*>(&other), static_cast<QWindow*>(&captions.window->window())}) {
        EXPECT_EQ(press(*window, Qt::Key_Exclam, ctrlShift, 10), Asked{"clear"})
            << "the first of two commands with these keys";
        captions.session.hasVisibleSourceTextFlag = false; // nothing to clear
        EXPECT_EQ(press(*window, Qt::Key_Exclam, ctrlShift, 10), Asked{"history"});
        captions.session.hasVisibleSourceTextFlag = true;
    }
    EXPECT_EQ(press(other, Qt::Key_Space, {}), Asked{}) << "Space alone is typed, not a command";
    for (ShortcutSetting* const setting :
         {&captions.settings.shortcutClear, &captions.settings.shortcutHistory}) {
        setting->keyCode = 96; // F5
        setting->modifiers = 0;
    }
    activate(captions.window->window());
    QTest::keyClick(&captions.window->window(), Qt::Key_F5);
    EXPECT_EQ(captions.asked, Asked{"clear"});
    EXPECT_EQ(storedKeys(keyWithoutShift(Qt::Key_ParenRight, ctrlShift, 19), ctrlShift)->keyCode,
              29)
        << "the sign above 0, whose scan code is 19, is stored as 0";
}

TEST_F(ApplicationShortcutsTests, CopyingCaptionsGivesWayToTextSelectedInTheFocusedItem) {
    QClipboard& clipboard = *QGuiApplication::clipboard();
    clipboard.setText("before");
    other.focus.setProperty("selectedText", "typed");
    press(other, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard.text(), "before");
    other.focus.setProperty("selectedText", "");
    press(other, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard.text(), "Said.\n说过。");
}

TEST_F(ApplicationShortcutsTests, ARepetitionThatQtDidNotRecognisePressesNothing) {
    const KeyRepeats repeats;
    QQuickWindow& window = captions.window->window();
    activate(window);
    QTest::keyClick(&window, Qt::Key_Tab); // to the start button
    const auto send = [&](QEvent::Type type, quint64 time) {
        QKeyEvent event(type, Qt::Key_Return, {}, 36, 0, 0);
        event.setTimestamp(time);
        event.ignore();
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    };
    send(QEvent::KeyPress, 1000);
    send(QEvent::KeyRelease, 1500);
    EXPECT_TRUE(send(QEvent::ShortcutOverride, 1500)) << "no shortcut gets the key";
    send(QEvent::KeyPress, 1500);
    EXPECT_EQ(captions.asked, Asked{"toggle"});
    send(QEvent::KeyRelease, 1540);
    send(QEvent::KeyPress, 1541);
    EXPECT_EQ(captions.asked, (Asked{"toggle", "toggle"})) << "pressed again";
}

} // namespace
} // namespace tessarune
