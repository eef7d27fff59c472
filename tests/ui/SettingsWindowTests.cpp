#include "tests/ui/StagedSettings.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QTest>
#include <algorithm>

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
    static QString told(const SettingRowsModel& rows, int row, int role) {
        return rows.data(rows.index(row), role).toString();
    }
    /// The control of this accessible name that is shown.
    QQuickItem* control(const char* name) {
        return controlBelow(*window().contentItem(), QString::fromUtf8(name));
    }

    StagedSettings settings;

  private:
    static QQuickItem* controlBelow(const QQuickItem& item, const QString& name) {
        for (QQuickItem* child : item.childItems()) {
            if (!child->isVisible())
                continue;
            if (child->objectName() == "control" &&
                (child->property("text") == name || child->property("name") == name))
                return child;
            if (QQuickItem* const found = controlBelow(*child, name))
                return found;
        }
        return nullptr;
    }
};

TEST_F(SettingsWindowTests, EverySettingHasAPlaceOrIsKnownToDoNothing) {
    const auto entries = settingEntries(settings.settings);
    for (const AnySetting* setting : settings.settings.all()) {
        const auto places = std::ranges::count(entries, setting, &SettingEntry::setting);
        const bool isModifiers = setting->key().ends_with("Modifiers"); // with their key code
        EXPECT_EQ(places, isModifiers || isWithoutEffect(settings.settings, *setting) ? 0 : 1)
            << setting->key();
    }
}

TEST_F(SettingsWindowTests, AKeyPressIsStoredAndAForeignChangeShows) {
    open("recording");
    QQuickItem* const toggle = control("保存录音和文字");
    ASSERT_NE(toggle, nullptr);
    toggle->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(&window(), Qt::Key_Space);
    EXPECT_EQ(settings.store.value("recordWhileCaptioning"), std::optional<SettingValue>(false));
    EXPECT_FALSE(control("无损录音")->isEnabled()); // there is no recording that it could be of

    settings.store.set("recordWhileCaptioning", true);
    settings.changedElsewhere();
    EXPECT_TRUE(toggle->property("checked").toBool());
    EXPECT_TRUE(control("无损录音")->isEnabled());
}

TEST_F(SettingsWindowTests, WhatIsNotUnderstoodIsToldAndReplaced) {
    open("recording");
    const SettingRowsModel& rows = *settings.window->model().rows();
    const int row = rowOf(rows, "保存录音和文字");
    settings.store.set("recordWhileCaptioning", std::string("maybe"));
    settings.changedElsewhere();
    EXPECT_NE(told(rows, row, SettingRowsModel::ProblemRole), "");
    EXPECT_FALSE(control("保存录音和文字")->property("checked").toBool());
    settings.window->model().rows()->restore(row);
    EXPECT_EQ(told(rows, row, SettingRowsModel::ProblemRole), "");
    EXPECT_EQ(settings.store.value("recordWhileCaptioning"), std::optional<SettingValue>(true));

    settings.window->model().setPane("recognition");
    const int address = rowOf(rows, "下载地址");
    settings.window->model().rows()->write(address, "somewhere");
    EXPECT_NE(told(rows, address, SettingRowsModel::ProblemRole), "");
    EXPECT_EQ(*settings.settings.modelMirror, "");
    settings.window->model().rows()->write(address, "https://models.example");
    EXPECT_EQ(told(rows, address, SettingRowsModel::ProblemRole), "");
}

TEST_F(SettingsWindowTests, ASliderStoresWhereItStopsAndNothingOnTheWay) {
    open("captions");
    SettingRowsModel& rows = *settings.window->model().rows();
    const int row = rowOf(rows, "原文字号");
    rows.slide(row, 30);
    rows.slide(row, 33);
    EXPECT_EQ(*settings.settings.sourceFontSize, 24);
    EXPECT_TRUE(runUntil([&] { return *settings.settings.sourceFontSize != 24; }));
    EXPECT_EQ(*settings.settings.sourceFontSize, 33);
}

TEST_F(SettingsWindowTests, ASearchFindsByAnyNameAndLeadsToThePane) {
    open("about");
    SettingsWindowModel& model = settings.window->model();
    window().findChild<QQuickItem*>("search")->forceActiveFocus();
    for (const char* query : {"置顶", "KEEPONTOP"}) {
        model.setQuery(QString::fromUtf8(query));
        EXPECT_GE(rowOf(*model.found(), "窗口置顶"), 0) << query;
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

} // namespace
} // namespace tessarune
