#include "tests/ui/StagedHistory.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QTest>

namespace tessarune {
namespace {

class HistoryWindowTests : public WarningsFail {
  protected:
    void open() {
        history.open();
        ASSERT_TRUE(runUntil([&] { return window().isActive() && !model().list()->isLoading(); }));
    }
    QQuickWindow& window() { return history.window->window(); }
    HistoryWindowModel& model() { return history.window->model(); }
    QString told(int row, int role) {
        return model().list()->data(model().list()->index(row), role).toString();
    }
    std::string titles() {
        std::string all;
        for (int row = 0; row < model().list()->count(); ++row)
            all += told(row, HistoryListModel::TitleRole).toStdString() + "|";
        return all;
    }

    StagedHistory history;
};

TEST_F(HistoryWindowTests, TheListFollowsTheCatalogAndASearch) {
    history.add(90'000 * 3, "Third day\nmore", "Third day\n第三天");
    const UUID noted = history.add(20, "Second");
    open();
    EXPECT_EQ(titles(), "Second|Third day more|");
    EXPECT_EQ(told(0, HistoryListModel::DayRole), "今天");
    history.catalog.setNote("My note", noted);
    history.add(10, "", "", true);
    ASSERT_TRUE(runUntil([&] { return model().list()->count() == 3; }));
    EXPECT_EQ(titles(), "|My note|Third day more|");
    EXPECT_EQ(model().currentRow(), 1) << "what was chosen stays so";
    model().setQuery("note seco");
    EXPECT_EQ(titles(), "My note|");
    model().setQuery("nothing like it");
    EXPECT_EQ(model().emptyTitle(), "没有找到");
    model().setQuery("三天"); // in the translation
    EXPECT_TRUE(runUntil([&] { return titles() == "Third day more|"; })) << titles();
    model().setQuery({});
    EXPECT_EQ(model().list()->count(), 3);
}

TEST_F(HistoryWindowTests, KeysChooseDeleteAndTakeBack) {
    history.add(30, "Third");
    const UUID second = history.add(20, "Second");
    history.add(10, "First");
    open();
    auto* const list = window().findChild<QQuickItem*>("recordings");
    list->forceActiveFocus();
    QTest::keyClick(&window(), Qt::Key_Down);
    EXPECT_EQ(model().detail()->recording()->id, second);
    QTest::keyClick(&window(), Qt::Key_Delete);
    EXPECT_EQ(titles(), "First|Third|");
    EXPECT_TRUE(history.catalog.recording(second)) << "it can be taken back";
    QTest::keyClick(&window(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(titles(), "First|Second|Third|");
    EXPECT_EQ(model().detail()->recording()->id, second);

    history.changeProblem = "Another program has them.";
    QTest::keyClick(&window(), Qt::Key_Delete);
    EXPECT_EQ(model().message(), "Another program has them.");
    history.changeProblem.clear();
    QTest::keyClick(&window(), Qt::Key_Delete);
    history.disk.refused = "recordings.json";
    model().dismissMessage();
    EXPECT_EQ(model().message(), "录音无法删除。");
    history.disk.recover();
    model().select(second);
    QTest::keyClick(&window(), Qt::Key_Delete);
    model().dismissMessage();
    EXPECT_FALSE(history.catalog.recording(second));
    QTest::keyClick(&window(), Qt::Key_Delete);
    history.window.reset();
    EXPECT_EQ(history.catalog.recordings().size(), 1U) << "the window's end is no way back";
}

TEST_F(HistoryWindowTests, TheChosenRecordingIsReadNotedAndExported) {
    const UUID id = history.add(20, "One.\nTwo.", "One.\n一。\n\nTwo.\n二。");
    history.time(id, 1);
    open();
    auto& detail = *model().detail();
    ASSERT_TRUE(runUntil([&] { return detail.hasTranslation(); }));
    const auto shown = [&](int row, int role) {
        return detail.rows()->data(detail.rows()->index(row), role).toString();
    };
    EXPECT_EQ(shown(0, HistoryTranscriptModel::TimeRole), "00:00");
    EXPECT_EQ(shown(1, HistoryTranscriptModel::TimeRole), "");
    EXPECT_EQ(shown(1, HistoryTranscriptModel::TranslationRole), "二。");
    model().copy(true);
    EXPECT_EQ(history.copied, "One.\n一。\n\nTwo.\n二。");

    auto* const note = window().findChild<QQuickItem*>("note");
    note->forceActiveFocus();
    for (const auto key : {Qt::Key_A, Qt::Key_B, Qt::Key_Return})
        QTest::keyClick(&window(), key);
    ASSERT_TRUE(runUntil([&] { return detail.note() == "ab"; }));
    EXPECT_EQ(history.catalog.recording(id)->note, "ab");

    model().exports()->setFormat("srt");
    model().exports()->run();
    ASSERT_TRUE(runUntil([&] { return !model().exports()->isBusy(); }));
    EXPECT_EQ(history.suggested, "ab-bilingual.srt");
    EXPECT_EQ(model().message(), "已保存到：/data/ab-bilingual.srt");
    EXPECT_TRUE(history.disk.contentsOf("/data/ab-bilingual.srt").starts_with("1\n00:00:00,000"));

    // What refinement saves shows, and a source without a translation says so.
    history.catalog.saveRefinedTranscript("New.", "", {}, id);
    ASSERT_TRUE(runUntil([&] { return shown(0, HistoryTranscriptModel::SourceRole) == "New."; }));
    EXPECT_TRUE(detail.hint().startsWith("这条录音没有保存译文。"));
}

} // namespace
} // namespace tessarune
