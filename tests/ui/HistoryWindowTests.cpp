#include "Tessarune/ui/controls/DesktopLook.h"
#include "tests/ui/HistoryWindowFixture.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <regex>

namespace tessarune {
namespace {

TEST_F(HistoryWindowTests, TheListFollowsTheCatalogAndASearch) {
    history.add(90'000 * 3, "Third day\nmore", "Third day\n第三天");
    const UUID noted = history.add(20, "Second");
    open();
    EXPECT_EQ(titles(), "Second|Third day more|");
    EXPECT_EQ(cell(0, HistoryListModel::DayRole), "今天");
    history.catalog.setNote("My note", noted);
    history.add(10, "", "", true);
    ASSERT_TRUE(runUntil([&] { return model().list()->count() == 3; }));
    EXPECT_EQ(titles(), "|My note|Third day more|");
    EXPECT_EQ(model().currentRow(), 1) << "the chosen recording stays chosen";
    model().setQuery("note seco");
    EXPECT_EQ(titles(), "My note|");
    model().setQuery("nothing like it");
    EXPECT_EQ(model().emptyTitle(), "没有找到");
    model().setQuery("三天"); // found in the translation
    EXPECT_TRUE(runUntil([&] { return titles() == "Third day more|"; })) << titles();
    model().setQuery({});
    EXPECT_EQ(model().list()->count(), 3);

    const std::string index = testing::contentsOf(history.paths.recordingIndex());
    const std::regex sound("\"[^\"]*" + noted.text() + "[.]wav\"");
    for (const bool isDamaged : {true, false}) {
        testing::writeContents(history.paths.recordingIndex(),
                               isDamaged ? std::regex_replace(index, sound, "5") : index);
        model().refresh();
        EXPECT_TRUE(runUntil([&] { return model().list()->count() == (isDamaged ? 2 : 3); }));
        EXPECT_EQ(model().listProblem().isEmpty(), !isDamaged) << "a damaged entry is reported";
    }

    // Another program saves a transcript, and then the index.
    const UUID foreign = history.add(5, "");
    model().select(foreign);
    ASSERT_TRUE(runUntil([&] { return model().detail()->hint() != ""; }));
    history.catalog.saveTranscript("Of another program", foreign);
    history.notifications.post(NotificationName::recordingCatalogDidChange);
    EXPECT_TRUE(runUntil([&] { return model().detail()->hasText(); }));
    EXPECT_TRUE(runUntil([&] { return titles().starts_with("Of another program|"); })) << titles();
}

TEST_F(HistoryWindowTests, KeysSelectARecordingDeleteItAndUndoThat) {
    history.add(30, "Third");
    const UUID second = history.add(20, "Second");
    history.add(10, "First");
    open();
    auto* const list = window().findChild<QQuickItem*>("recordings");
    list->forceActiveFocus();
    QTest::keyClick(&window(), Qt::Key_Down);
    EXPECT_EQ(model().detail()->recording()->id, second);
    DesktopLook::setReducesMotion(true);
    QTest::keyClick(&window(), Qt::Key_Delete);
    const auto* const message = window().findChild<QQuickItem*>("message");
    const auto* const play = window().findChild<QQuickItem*>("play");
    EXPECT_EQ(message->opacity(), 1);
    EXPECT_TRUE(play->isVisible());
    EXPECT_LT(message->mapToScene({0, message->height()}).y(), play->mapToScene({}).y());
    DesktopLook::setReducesMotion(false);
    EXPECT_EQ(titles(), "First|Third|");
    EXPECT_TRUE(history.catalog.recording(second)) << "kept while the deletion can be undone";
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, QString(), true);
    QCoreApplication::sendEvent(&window(), &held);
    EXPECT_EQ(titles(), "First|Third|") << "a key that is held deletes no more";
    QTest::keyClick(&window(), Qt::Key_Delete);
    EXPECT_EQ(titles(), "First|");
    EXPECT_TRUE(model().message().endsWith("和另外 1 条录音"));
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(&window(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(titles(), "First|Second|Third|") << "each deletion can be undone";
    EXPECT_EQ(model().detail()->recording()->id, second);

    // The disk refuses the change.
    const auto index = history.paths.recordingIndex();
    const auto aside = history.folder / "index";
    std::filesystem::rename(index, aside);
    std::filesystem::create_directory(index);
    QTest::keyClick(&window(), Qt::Key_Delete);
    EXPECT_TRUE(model().canUndo());
    model().dismissMessage();
    EXPECT_TRUE(runUntil([&] { return model().message() == "录音无法删除。"; }));
    EXPECT_FALSE(model().canUndo());
    std::filesystem::remove(index);
    std::filesystem::rename(aside, index);
    // The window may have read the index while it was a folder. The new note shows that it has read
    // the file since.
    history.catalog.setNote("2nd", second);
    EXPECT_TRUE(runUntil([&] { return titles() == "First|2nd|Third|"; })) << titles();
    model().select(second);

    history.changeProblem = "Another program has them.";
    QTest::keyClick(&window(), Qt::Key_Delete);
    EXPECT_EQ(model().message(), "Another program has them.");
    history.changeProblem.clear();
    QTest::keyClick(&window(), Qt::Key_Delete);
    model().dismissMessage();
    EXPECT_TRUE(runUntil([&] { return !history.catalog.recording(second); }));
    QTest::keyClick(&window(), Qt::Key_Delete);
    history.window.reset();
    EXPECT_EQ(history.catalog.recordings().size(), 1U) << "closing the window deletes for good";
}

TEST_F(HistoryWindowTests, AHintIsNotCutOffAtTheWindowsEdge) {
    history.add(10, "First");
    history.application.styleHints()->setUseHoverEffects(true); // off on some platforms
    open();
    const auto* const button = window().findChild<QQuickItem*>("delete");
    QTest::mouseMove(&window(), button->mapToScene({5, 5}).toPoint());
    QTest::mouseMove(&window(), button->mapToScene({9, 9}).toPoint());
    const auto hint = [&]() -> const QQuickItem* {
        for (const QQuickItem* item : window().findChildren<QQuickItem*>("hint")) {
            if (item->isVisible())
                return item;
        }
        return nullptr;
    };
    ASSERT_TRUE(runUntil([&] { return hint() != nullptr; }));
    const QQuickItem* const box = hint()->parentItem();
    EXPECT_GT(box->width(), hint()->implicitWidth());
    EXPECT_LT(box->mapToScene({box->width(), 0}).x(), window().width());
}

TEST_F(HistoryWindowTests, TheChosenRecordingIsShownNotedAndExported) {
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
    EXPECT_TRUE(runUntil([&] { return history.dataFolder.use_count() == 1; }))
        << "the data folder is released after the change";

    model().exports()->setFormat("srt");
    model().exports()->run();
    ASSERT_TRUE(runUntil([&] { return !model().exports()->isBusy(); }));
    EXPECT_EQ(history.suggested, "ab-bilingual.srt");
    const auto file = history.folder / "ab-bilingual.srt";
    EXPECT_EQ(model().message().toStdString(), "已保存到：" + file.string());
    EXPECT_TRUE(testing::contentsOf(file).starts_with("1\n00:00:00,000"));

    model().exports()->setContent(2);
    model().exports()->run();
    ASSERT_TRUE(runUntil([&] { return !model().exports()->isBusy(); }));
    EXPECT_EQ(history.suggested, "ab-translation.srt");
    model().exports()->setFormat("pdf");
    EXPECT_EQ(model().exports()->content(), 1);

    // A note that is being written stays, whatever happens to its recording.
    QTest::keyClick(&window(), Qt::Key_C);
    history.catalog.saveBilingualTranscript("", id);
    history.catalog.announceTranscript(id);
    RecordingMetadata compressed = *history.catalog.recording(id);
    compressed.duration += 1;
    history.catalog.upsert(compressed);
    ASSERT_TRUE(runUntil([&] { return detail.duration() == "12:35"; }));
    EXPECT_EQ(note->property("text"), "abc");
    const UUID other = history.add(10, "Imported");
    history.notifications.post(NotificationName::historyImportSelectRecording, other);
    ASSERT_TRUE(runUntil([&] { return model().list()->count() == 2; }));
    EXPECT_EQ(detail.recording()->id, id);
    model().select(other);
    ASSERT_TRUE(runUntil([&] { return history.catalog.recording(id)->note == "abc"; }));
    EXPECT_EQ(note->property("text"), "");
    model().select(id);

    // The window shows a refined text at once, and a hint if there is no translation.
    history.catalog.saveRefinedTranscript("New.", "", {}, id);
    ASSERT_TRUE(runUntil([&] { return shown(0, HistoryTranscriptModel::SourceRole) == "New."; }));
    EXPECT_TRUE(detail.hint().startsWith("这条录音没有保存译文。"));

    model().exports()->setFormat("m4a");
    model().exports()->run();
    const auto* const panel = window().findChild<QObject*>("exportPanel");
    EXPECT_TRUE(panel->property("visible").toBool()) << "a long export shows its progress";
    EXPECT_TRUE(model().exports()->audioText().contains("ab"));
    model().exports()->setFormat("txt");
    EXPECT_FALSE(model().exports()->isBusy()) << "a text can be exported meanwhile";
    window().hide();
    ASSERT_TRUE(runUntil([&] { return !panel->property("visible").toBool(); }));
    EXPECT_NE(history.notified, "") << "nobody sees the message in the window";
}

TEST_F(HistoryWindowTests, TheRowIsMarkedThatContainsTheSpokenSentence) {
    // The text was refined after it had been translated.
    const UUID id = history.add(20, "One.\nTwo.\nTwo, too.\nThree.\nFour.",
                                "One.\n一。\n\nTwo two.\n二。\n\nFour.\n四。\n\nFive.\n五。");
    HistoryWordTimeline timeline;
    double start = 0;
    for (const char* const source : {"One.", "Two.", "Two, too.", "Three.", "Four."})
        timeline.sentences.push_back({source, std::exchange(start, start + 7), start, {}, ""});
    history.catalog.saveWordTimeline(timeline, id);
    open();
    ASSERT_TRUE(runUntil([&] { return model().detail()->hasTranslation(); }));
    HistoryPlaybackModel& playback = *model().playback();
    const auto marked = [&](int mode) {
        model().detail()->setMode(mode);
        std::string rows;
        for (int sentence = 0; sentence < 5; ++sentence) {
            playback.seek(sentence * 7 + 1);
            rows += std::to_string(playback.activeRow()) + " ";
        }
        return rows;
    };
    EXPECT_EQ(marked(0), "0 1 2 3 4 ");
    EXPECT_EQ(marked(1), "0 1 1 1 2 ") << "row 1 contains three refined sentences";
    playback.playRow(1);
    EXPECT_EQ(playback.position(), 7);
    EXPECT_EQ(*history.player->boundedPlaybackSentenceIndex, 1U);
    playback.playRow(2);
    EXPECT_EQ(playback.position(), 28);
    playback.focusRow(3); // the refined text no longer has this sentence
    EXPECT_EQ(playback.activeRow(), 3);
    EXPECT_EQ(playback.position(), 28);
    EXPECT_EQ(model().detail()->rows()->nearestRow(3), 1);

    const UUID running = history.add(5, "", "", true);
    history.liveText = "It is being said.";
    model().select(running);
    ASSERT_TRUE(
        runUntil([&] { return model().detail()->payload().sourceText == "It is being said."; }));
    EXPECT_TRUE(model().detail()->hint().isEmpty());
    history.liveDuration = 65.4;
    const auto& list = *model().list();
    const auto length = [&] {
        return list.data(list.index(list.rowOf(running)), HistoryListModel::DurationRole);
    };
    EXPECT_EQ(length(), "01:05");
    EXPECT_EQ(model().detail()->duration(), "01:05");
    history.live.reset();
    EXPECT_EQ(length(), "") << "the length of another program's recording is unknown";
    history.liveText = "Said in a session that keeps nothing.";
    EXPECT_FALSE(model().detail()->hasText()) << "this session's text belongs to no recording";
}

TEST_F(HistoryWindowTests, FilesAreImportedOrTheReasonIsShown) {
    history.add(90, "Former");
    open();
    const QString broken = QStringLiteral("note.txt is not a sound file of a known format");
    auto& imports = *model().imports();
    const auto state = [&](int row) {
        return imports.data(imports.index(row), HistoryImportsModel::StateTextRole).toString();
    };
    history.changeProblem = "Another program has them.";
    imports.add({history.file("talk.mp3", "sound of a talk")});
    EXPECT_EQ(imports.count(), 0);
    EXPECT_EQ(model().message(), "Another program has them.");
    history.changeProblem.clear();

    history.isCopyHeld = true;
    imports.add({history.file("gone.mp3", "sound"), history.file("note.txt", "no sound"),
                 QUrl("https://example.org/talk.mp3"),
                 history.file("talk.mp3", "sound of a talk")});
    ASSERT_TRUE(runUntil([&] { return state(0) == "导入 0%"; }));
    EXPECT_EQ(state(1), "等待导入");
    EXPECT_EQ(state(2), "只能导入本机上的文件。");
    imports.remove(2);
    imports.remove(0); // while it is being copied
    history.isCopyHeld = false;
    ASSERT_TRUE(runUntil([&] { return imports.count() == 1 && state(0) == broken; }))
        << state(0).toStdString();
    ASSERT_TRUE(runUntil([&] { return titles() == "talk|Former|"; })) << titles();
    EXPECT_EQ(model().detail()->note(), "talk");
    EXPECT_TRUE(runUntil(
        [&] { return model().detail()->payload().sourceText == "New words.\nAnd more."; }));
    EXPECT_EQ(history.disk.list(history.paths.recordings()).size(), 2U) << "only two recordings";
    imports.remove(0);
    EXPECT_EQ(imports.count(), 0);

    const QUrl elsewhere("https://example.org/talk.mp3");
    imports.add({elsewhere, elsewhere, elsewhere, elsewhere, elsewhere});
    imports.add({history.file("note.txt", "no sound")});
    const auto* const list = window().findChild<QQuickItem*>("imports");
    EXPECT_TRUE(runUntil([&] {
        return state(5) == broken && list->property("contentY").toDouble() > 0 &&
               list->property("atYEnd").toBool();
    })) << "the newest failure is visible";
}

TEST_F(HistoryWindowTests, ARecordingIsRefinedAgainAndOnlyItsRowChanges) {
    for (int i = 1; i <= 20; ++i)
        history.add(1000.0 * i, "Number " + std::to_string(i));
    open();
    model().setCurrentRow(7);
    ASSERT_TRUE(runUntil([&] { return model().detail()->hasText(); }));
    QSignalSpy changes(model().list(), &HistoryListModel::dataChanged);
    QSignalSpy additions(model().list(), &HistoryListModel::rowsInserted);
    HistoryRefinementModel& refinement = *model().refinement();
    const auto settled = [&] { return !refinement.isBusy(); };

    history.failure = "The model is damaged.";
    refinement.refresh();
    ASSERT_EQ(refinement.models().size(), 3);
    refinement.refine(2);
    ASSERT_TRUE(runUntil([&] { return !refinement.problem().isEmpty() && settled(); }));
    EXPECT_EQ(history.model, "small-en");
    EXPECT_EQ(cell(7, HistoryListModel::StateTextRole), "转写失败");
    EXPECT_EQ(refinement.problem(), "转写失败，文字保持原样：The model is damaged.");

    history.failure.clear();
    history.hearsForever = true;
    refinement.refine(0);
    ASSERT_TRUE(runUntil([&] { return refinement.progress() > 0; }));
    EXPECT_TRUE(refinement.problem().isEmpty());
    EXPECT_EQ(cell(7, HistoryListModel::StateTextRole), "转写 50%");
    EXPECT_EQ(refinement.stateText(), "正在重新转写…");
    refinement.cancel();
    ASSERT_TRUE(runUntil([&] { return settled() && !model().message().isEmpty(); }));
    EXPECT_EQ(model().message(), "文字保持原样。");
    EXPECT_EQ(model().detail()->payload().sourceText, "Number 8");

    history.hearsForever = false;
    refinement.refine(0);
    ASSERT_TRUE(
        runUntil([&] { return cell(7, HistoryListModel::TitleRole) == "New words. And more."; }));
    for (const auto& change : changes) {
        EXPECT_EQ(change[0].toModelIndex().row(), 7);
        EXPECT_EQ(change[1].toModelIndex().row(), 7);
    }
    EXPECT_TRUE(additions.isEmpty());

    history.hearsForever = true;
    const UUID silent = history.add(5, "");
    history.notifications.post(NotificationName::historyImportSelectRecording, silent);
    ASSERT_TRUE(
        runUntil([&] { return model().detail()->isShown() && !model().detail()->hasText(); }));
    refinement.refine(0);
    EXPECT_TRUE(runUntil([&] { return refinement.stateText() == "转写 50%"; }))
        << "the first transcription: " << refinement.stateText().toStdString();
    refinement.cancel();
    EXPECT_TRUE(runUntil(settled));
}

} // namespace
} // namespace tessarune
