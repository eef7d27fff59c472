#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/ui/desktop/DesktopTray.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>
#include <iostream>

namespace tessarune {
namespace {

[[noreturn]] void printMenu() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 1;
    char name[] = "tray";
    char* argv[] = {name, nullptr};
    const QApplication application(argc, argv);
    QtHost host;
    testing::MemoryUserDefaults defaults;
    const AppSettings settings(defaults);
    const LiveCaptionDisplayStore display([] { return 0.0; });
    const SessionTranslation translation;
    const CaptionCore core = LiveCaptionCoreFactory::make(host, settings);
    SessionView session(display, core, translation.view());
    const Published<std::optional<std::string>> waiting;
    const auto nothing = [] {};
    const DesktopTray tray(
        session, waiting, "/nowhere",
        {nothing, nothing, [] { return true; }, nothing, nothing, {}, nothing, nothing});
    for (const bool isListening : {false, true}) {
        session.isListening = isListening;
        for (const QWidget* const menu : QApplication::topLevelWidgets()) {
            for (const QAction* const entry : menu->actions())
                std::cerr << entry->text().toStdString() << (entry->isEnabled() ? ";" : "-;");
        }
    }
    std::_Exit(0);
}

/// In a process of its own, because widgets need another application object.
TEST(DesktopTrayDeathTest, ItsMenuSaysWhatEachEntryDoes) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(printMenu(), ::testing::ExitedWithCode(0),
                "开始字幕;隐藏字幕窗口;复制双语字幕-;;历史记录…;关于 Tessarune;;退出 Tessarune;"
                "停止字幕;");
}

} // namespace
} // namespace tessarune
