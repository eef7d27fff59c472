#include "tests/ui/StagedSettings.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QSet>
#include <QTest>
#include <algorithm>
#include <vector>

namespace tessarune {
namespace {

class SettingsWindowTests : public WarningsFail {
  protected:
    void open(const std::string& pane) {
        settings.open(pane);
        ASSERT_TRUE(runUntil([&] { return window().isActive(); }));
    }
    QQuickWindow& window() { return settings.window->window(); }

    /// The row of a setting among those that are shown, by its Chinese title.
    static int rowOf(const SettingRowsModel& rows, const char* title) {
        for (int row = 0; row < rows.rowCount(); ++row) {
            if (rows.data(rows.index(row), SettingRowsModel::TitleRole) == QString::fromUtf8(title))
                return row;
        }
        return -1;
    }
    static QString cell(const SettingRowsModel& rows, int row, int role) {
        return rows.data(rows.index(row), role).toString();
    }
    /// All visible controls.
    std::vector<QQuickItem*> controls() {
        std::vector<QQuickItem*> all;
        collect(*window().contentItem(), all);
        return all;
    }
    /// The control with this name or text.
    QQuickItem* control(const char* name) {
        for (QQuickItem* item : controls()) {
            if (item->property("name") == QString::fromUtf8(name) ||
                item->property("text") == QString::fromUtf8(name))
                return item;
        }
        return nullptr;
    }

    StagedSettings settings;

  private:
    static void collect(const QQuickItem& item, std::vector<QQuickItem*>& all) {
        for (QQuickItem* child : item.childItems()) {
            if (!child->isVisible())
                continue;
            if (child->objectName() == "control")
                all.push_back(child);
            collect(*child, all);
        }
    }
};

TEST_F(SettingsWindowTests, EverySettingThatHasAnEffectIsShownOnce) {
    const AppSettings& all = settings.settings;
    const AnySetting* const idle[] = {&all.screenCaptureProtected, &all.subtitleLyricsLayout,
                                      &all.arenaScreenshotEnabled, &all.arenaScreenshotIntervalMs};
    const auto entries = settingEntries(settings.settings);
    for (const AnySetting* setting : settings.settings.all()) {
        const auto places = std::ranges::count(entries, setting, &SettingEntry::setting);
        const bool isModifiers = setting->key().ends_with("Modifiers"); // shown with their key code
        const bool isIdle = std::ranges::find(idle, setting) != std::end(idle);
        EXPECT_EQ(places, isModifiers || isIdle ? 0 : 1) << setting->key();
    }
}

TEST_F(SettingsWindowTests, AKeyPressIsStoredAndAChangeByAnotherProgramIsShown) {
    open("recording");
    QQuickItem* const toggle = control("保存录音和文字");
    ASSERT_NE(toggle, nullptr);
    toggle->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyPress(&window(), Qt::Key_Enter);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Enter, Qt::NoModifier, "\r", true);
    QCoreApplication::sendEvent(&window(), &repeated);
    EXPECT_EQ(settings.store.value("recordWhileCaptioning"), std::optional<SettingValue>(false));
    EXPECT_FALSE(control("无损录音")->isEnabled()); // there is no recording that it applies to

    settings.store.set("recordWhileCaptioning", true);
    settings.changedElsewhere();
    EXPECT_TRUE(toggle->property("checked").toBool());
    EXPECT_TRUE(control("无损录音")->isEnabled());
}

TEST_F(SettingsWindowTests, AnInvalidValueIsReportedAndCanBeReplaced) {
    open("recording");
    const SettingRowsModel& rows = *settings.window->model().rows();
    const int row = rowOf(rows, "保存录音和文字");
    settings.store.set("recordWhileCaptioning", std::string("maybe"));
    settings.changedElsewhere();
    EXPECT_NE(cell(rows, row, SettingRowsModel::ProblemRole), "");
    EXPECT_FALSE(control("保存录音和文字")->property("checked").toBool());
    settings.window->model().rows()->restore(row);
    EXPECT_EQ(cell(rows, row, SettingRowsModel::ProblemRole), "");
    EXPECT_EQ(settings.store.value("recordWhileCaptioning"), std::optional<SettingValue>(true));

    settings.window->model().setPane("recognition");
    settings.store.set("selectedRecognitionOptionID", std::string("klingon"));
    settings.changedElsewhere();
    EXPECT_NE(cell(rows, rowOf(rows, "要识别的英语"), SettingRowsModel::ProblemRole), "");
    settings.store.set("speechModel", std::string("enormous"));
    settings.changedElsewhere();
    EXPECT_TRUE(settings.window->models().problem().contains("enormous"));
    settings.window->models().choose(0);
    EXPECT_EQ(settings.window->models().problem(), "");
    const int address = rowOf(rows, "下载地址");
    QQuickItem* const field = control("下载地址");
    ASSERT_NE(field, nullptr);
    field->setProperty("text", "somewhere");
    settings.window->model().rows()->write(address, "somewhere");
    EXPECT_NE(cell(rows, address, SettingRowsModel::ProblemRole), "");
    settings.window->model().rows()->write(address, "");
    EXPECT_EQ(cell(rows, address, SettingRowsModel::ProblemRole), "");
    EXPECT_EQ(field->property("text"), "") << "the refused text goes with its message";
    settings.window->model().rows()->write(address, "somewhere");
    EXPECT_EQ(*settings.settings.modelMirror, "");
    settings.window->model().rows()->write(address, "https://models.example");
    EXPECT_EQ(cell(rows, address, SettingRowsModel::ProblemRole), "");
    EXPECT_EQ(field->property("text"), "https://models.example");
    settings.window->model().rows()->restore(address);
    EXPECT_EQ(field->property("text"), "");

    settings.window->model().setPane("captions");
    const int color = rowOf(rows, "标记颜色");
    settings.window->model().rows()->write(color, "reddish");
    settings.settings.highlightChanges = !*settings.settings.highlightChanges;
    EXPECT_NE(cell(rows, color, SettingRowsModel::ProblemRole), "") << "nothing is corrected";
}

TEST_F(SettingsWindowTests, ASliderStoresOnlyTheValueAtWhichItStops) {
    open("captions");
    SettingRowsModel& rows = *settings.window->model().rows();
    const int row = rowOf(rows, "原文字号");
    rows.slide(row, 30);
    rows.slide(row, 33);
    EXPECT_EQ(*settings.settings.sourceFontSize, 24);
    EXPECT_TRUE(runUntil([&] { return *settings.settings.sourceFontSize != 24; }));
    EXPECT_EQ(*settings.settings.sourceFontSize, 33);
    EXPECT_TRUE(settings.window->preview().isRunning());
    window().close();
    EXPECT_TRUE(runUntil([&] { return !settings.window->preview().isRunning(); }))
        << "a closed window has no running preview";
}

TEST_F(SettingsWindowTests, ASearchFindsTitlesAndKeysAndOpensThePane) {
    open("about");
    SettingsWindowModel& model = settings.window->model();
    window().findChild<QQuickItem*>("search")->forceActiveFocus();
    for (const char* query : {"置顶", "KEEPONTOP"}) {
        model.setQuery(QString::fromUtf8(query));
        EXPECT_GE(rowOf(*model.found(), "窗口置顶"), 0) << "a search for " << query;
    }
    model.setQuery("zzz");
    EXPECT_TRUE(model.foundNothing());
    model.setQuery("Copy");
    ASSERT_TRUE(runUntil([&] { return control("打开") != nullptr; }));
    control("打开")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(model.pane(), "shortcuts");
    EXPECT_EQ(model.query(), "");
}

TEST_F(SettingsWindowTests, ConflictsOfShortcutsAreShown) {
    open("shortcuts");
    const ShortcutsModel& shortcuts = settings.window->shortcuts();
    const auto conflicts = [&] {
        std::vector<int> rows;
        for (int row = 0; row < shortcuts.rowCount(); ++row) {
            if (shortcuts.data(shortcuts.index(row), ShortcutsModel::ConflictRole) != "")
                rows.push_back(row);
        }
        return rows;
    };
    EXPECT_EQ(conflicts(), std::vector<int>{});
    QQuickItem* const record = control("启动录音转录");
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        record->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(&window(), Qt::Key_Space);
        QTest::keyClick(&window(), key, modifiers);
    };
    press(Qt::Key_E, Qt::ControlModifier); // also the keys that clear the captions, row 7
    EXPECT_EQ(conflicts(), (std::vector<int>{0, 7}));
    EXPECT_EQ(*settings.settings.shortcutToggleRecord.keyCode, 14);
    EXPECT_EQ(*settings.settings.shortcutToggleRecord.modifiers, 0x100000);
    press(Qt::Key_F, Qt::ControlModifier); // recorded, although these keys search in this window
    EXPECT_EQ(*settings.settings.shortcutToggleRecord.keyCode, 3);
    EXPECT_EQ(conflicts(), std::vector<int>{0}) << "Ctrl+F searches the history";
    for (const Qt::Key key : {Qt::Key_Z, Qt::Key_S, Qt::Key_O, Qt::Key_Q}) { // of other windows
        press(key, Qt::ControlModifier);
        EXPECT_EQ(conflicts(), std::vector<int>{0}) << "Ctrl and key " << key;
    }
    press(Qt::Key_VolumeUp, Qt::NoModifier); // cannot be stored
    EXPECT_NE(shortcuts.data(shortcuts.index(0), ShortcutsModel::ProblemRole), "");
    press(Qt::Key_Escape, Qt::NoModifier);
    EXPECT_EQ(*settings.settings.shortcutToggleRecord.keyCode, 12);
}

TEST_F(SettingsWindowTests, ADownloadShowsItsProgressAndItsOutcome) {
    for (const bool succeeds : {true, false}) {
        open("recognition");
        ResourcesModel& models = settings.window->models();
        const auto cell = [&](int role) { return models.data(models.index(2), role); };
        models.choose(2);
        EXPECT_EQ(*settings.settings.speechModel, "automatic"); // a missing model cannot be chosen
        models.download(2);
        EXPECT_TRUE(cell(ResourcesModel::LoadingRole).toBool());
        EXPECT_TRUE(runUntil([&] { return cell(ResourcesModel::ProgressRole) == 30.0 / 78; }));
        settings.models.succeeds.resume(succeeds);
        ASSERT_TRUE(runUntil([&] { return !cell(ResourcesModel::LoadingRole).toBool(); }));
        EXPECT_EQ(cell(ResourcesModel::ProblemRole), succeeds ? "" : "The disk is full.");
        EXPECT_EQ(cell(ResourcesModel::CanChooseRole).toBool(), succeeds);
        settings.models.models[1].isInstalled = false;
        settings.models.succeeds = OneShot<bool>(Executor::main(settings.captions.host));
    }
}

TEST_F(SettingsWindowTests, AProfileCanOnlyBeAppliedBetweenSessions) {
    open("advanced");
    settings.captions.enter(LiveSessionPhase::listening, SessionStatus::Kind::none);
    EXPECT_FALSE(control("低延迟")->isEnabled());
    settings.captions.enter(LiveSessionPhase::idle, SessionStatus::Kind::idle);
    control("低延迟")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(*settings.settings.freezeStableSeconds, 0.35);
}

TEST_F(SettingsWindowTests, DiagnosticsRunsAreListedOpenedReplayedAndRemovedAfterConfirmation) {
    const std::filesystem::path run = "/data/Diagnostics/Live-2026-03-01-20-15-00";
    settings.files.setContents(
        run / "manifest.json",
        R"({"kind":"liveSessionDiagnosticsManifest","diagnosticsLevel":"standard",)"
        R"("durationSeconds":90,"summary":{"committedSegmentCount":7}})");
    settings.files.setContents(run / "perf.csv", "t\n");
    open("advanced");
    const std::string title = run.filename().string();
    const auto button = [&](const char* text) { return control((text + (": " + title)).c_str()); };
    ASSERT_TRUE(runUntil([&] { return button("打开文件夹") != nullptr; }));
    const QVariantMap row = settings.window->runs().runs().at(0).toMap();
    EXPECT_NE(row["about"].toString().indexOf("1.5 分钟 · 7 条字幕"), -1)
        << row["about"].toString().toStdString();
    EXPECT_EQ(row["holds"].toString(), "性能样本");
    button("打开文件夹")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(settings.opened, run);
    button("回放")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Return);
    ASSERT_TRUE(runUntil([&] { return !settings.window->runs().message().isEmpty(); }));
    EXPECT_FALSE(settings.window->runs().isGood()) << "a replay needs an event log";
    EXPECT_EQ(settings.window->runs().messageRow(), 0);
    const auto* const answer = window().findChild<QObject*>("runAnswer");
    EXPECT_TRUE(answer->property("visible").toBool());
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_TRUE(window().isVisible() && !answer->property("visible").toBool());
    button("删除")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_TRUE(settings.files.has(run)) << "the first press only asks for confirmation";
    settings.changeProblem = "another program records";
    QTest::keyClick(&window(), Qt::Key_Return);
    ASSERT_TRUE(runUntil([&] { return settings.window->runs().message().startsWith("another"); }));
    settings.changeProblem.clear();
    QTest::keyClick(&window(), Qt::Key_Return); // asks again
    QTest::keyClick(&window(), Qt::Key_Return);
    ASSERT_TRUE(runUntil([&] { return settings.window->runs().isEmpty(); }));
    EXPECT_FALSE(settings.files.has(run));
}

TEST_F(SettingsWindowTests, EveryControlHasANameAndIsReachedByTab) {
    for (const SettingsPane pane : settingsPanes) {
        open(std::string(name(pane)));
        const QQuickItem* const first = window().activeFocusItem();
        QSet<const QQuickItem*> reached;
        do {
            const QQuickItem* const item = window().activeFocusItem();
            reached << item;
            const QAccessibleInterface* const accessible =
                QAccessible::queryAccessibleInterface(window().activeFocusItem());
            ASSERT_NE(accessible, nullptr);
            EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
                << name(pane) << ": the name of a " << item->metaObject()->className();
            QTest::keyClick(&window(), Qt::Key_Tab);
        } while (!reached.contains(window().activeFocusItem()));
        EXPECT_EQ(window().activeFocusItem(), first)
            << name(pane) << ": Tab returns to the first control";
        for (const QQuickItem* item : controls())
            EXPECT_TRUE(!item->isEnabled() || reached.contains(item))
                << name(pane) << ": reached: " << item->property("text").toString().toStdString();
    }
}

TEST_F(SettingsWindowTests, AScreenReaderOperatesTheControls) {
    const auto act = [&](const char* name, const QString& action) {
        QAccessible::queryAccessibleInterface(control(name))->actionInterface()->doAction(action);
    };
    open("recording");
    act("保存录音和文字", QAccessibleActionInterface::toggleAction());
    EXPECT_FALSE(*settings.settings.recordWhileCaptioning);
    act("无损录音", QAccessibleActionInterface::toggleAction());
    EXPECT_FALSE(*settings.settings.recordLosslessAudio) << "a disabled control stays as it is";
    open("captions");
    const std::int64_t opacity = *settings.settings.bgOpacity;
    act("背景不透明度", QAccessibleActionInterface::decreaseAction());
    EXPECT_TRUE(runUntil([&] { return *settings.settings.bgOpacity < opacity; }));
    act("标记颜色", QAccessibleActionInterface::pressAction());
    const auto isTextField = [&] {
        return window().activeFocusItem()->property("acceptableInput").isValid();
    };
    ASSERT_TRUE(runUntil(isTextField));
    const QQuickItem& field = *window().activeFocusItem();
    EXPECT_GT(field.width(), field.property("contentWidth").toDouble());
    EXPECT_LT(field.mapRectToScene(field.boundingRect()).right(), window().width());
}

} // namespace
} // namespace tessarune
