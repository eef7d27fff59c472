#include "tests/ui/HistoryWindowFixture.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

namespace tessarune {
namespace {

// The words of a recording, and the usage.

TEST_F(HistoryWindowTests, WordsAreCountedMarkedLookedUpAndHeard) {
    const UUID id = history.add(20, "The best of times.\nThe worst of times, of all time.");
    open();
    ASSERT_TRUE(runUntil([&] { return model().detail()->hasText(); }));
    HistoryWordsModel& words = *model().words();
    EXPECT_EQ(words.rowCount(), 0) << "words are counted when the user opens them";
    QMetaObject::invokeMethod(window().findChild<QQuickItem*>("openWords"), "clicked");
    ASSERT_TRUE(runUntil([&] { return words.rowCount() > 0; }));
    const auto row = [&](int at) {
        std::string text;
        for (const int role : {WordListModel::WordRole, WordListModel::FormsRole,
                               WordListModel::CountRole, WordListModel::KnownRole})
            text += words.data(words.index(at), role).toString().toStdString() + "|";
        return text;
    };
    EXPECT_EQ(row(1), "time|times|3|false|");
    EXPECT_EQ(words.nextPlace("time"), 0);

    auto* const list = window().findChild<QQuickItem*>("words");
    words.setQuery("TIMES"); // a form of the lemma
    ASSERT_EQ(words.rowCount(), 1);
    list->forceActiveFocus();
    QTest::keyClick(&window(), Qt::Key_K);
    QTest::keyClick(&window(), Qt::Key_F);
    EXPECT_EQ(row(0), "time|times|3|true|");
    EXPECT_TRUE(VocabularyStore(history.disk, history.paths).isFavorite("time"));
    words.setKind(1); // only words that are not known yet
    EXPECT_EQ(words.emptyTitle(), "没有这样的单词");
    words.setKind(0);
    words.choose(0);
    WordCardModel& card = *model().card();
    ASSERT_TRUE(runUntil([&] { return card.senses().size() == 3; }));
    EXPECT_TRUE(card.senses().front().startsWith("名词 · an instance"));
    card.setDictionary(6);
    card.lookUp();
    EXPECT_EQ(history.opened, "https://www.merriam-webster.com/dictionary/time");
    EXPECT_EQ(history.fetches, 0) << "nothing is fetched before the user asks for it";
    card.hear();
    card.hear(); // stops it
    runFor(20);
    EXPECT_EQ(card.hint(), "");
    card.hear();
    EXPECT_TRUE(card.isFetching());
    ASSERT_TRUE(runUntil([&] { return card.hint().startsWith("没有找到这个词的发音"); }));
    EXPECT_FALSE(card.isFetching());
    EXPECT_GT(history.fetches, 0);

    model().openVocabulary();
    EXPECT_EQ(model().vocabulary()->rowCount(), 1);
    for (const char* const word : {"city", "age"})
        history.vocabulary->addFavorite(word);
    auto* const marked =
        window().findChild<QQuickItem*>("vocabulary")->findChild<QQuickItem*>("words");
    marked->setProperty("currentIndex", 1);
    EXPECT_EQ(card.word(), "city");
    model().vocabulary()->remove(1);
    EXPECT_EQ(card.word(), "time") << "the card shows the current word of the list";
    model().vocabulary()->setQuery("age");
    EXPECT_EQ(card.word(), "") << "a search leaves no current word";
    model().vocabulary()->setQuery({});
    history.vocabulary->removeFavorite("age");
    model().vocabulary()->remove(0);
    EXPECT_EQ(model().vocabulary()->emptyTitle(), "还没有收藏的单词");
    EXPECT_TRUE(history.vocabulary->isMastered("time"));

    history.catalog.saveRefinedTranscript("Good times.\nBad times.", "", {}, id);
    ASSERT_TRUE(runUntil([&] { return row(0) == "time|times|2|true|"; }));
    EXPECT_EQ(words.nextPlace("time"), 0) << "a new transcript is searched from its start";
}

TEST_F(HistoryWindowTests, UsageIsDrawnByPeriodAndFollowsTheCatalog) {
    history.add(86'400.0 * 40, "one two three");
    history.add(60, "four");
    const UUID unreadable = history.add(50, "unread");
    std::filesystem::remove(history.catalog.transcriptURL(unreadable));
    std::filesystem::create_directory(history.catalog.transcriptURL(unreadable));
    open();
    model().openUsage();
    UsageModel& usage = *model().usage();
    ASSERT_TRUE(runUntil([&] { return usage.rowCount() >= 40; }));
    EXPECT_EQ(usage.totals(), QStringList({"37:42", "3", "4"}));
    EXPECT_NE(usage.uncounted(), "") << "one text is not counted";
    const auto last = [&](int role) { return usage.data(usage.index(usage.rowCount() - 1), role); };
    usage.setMeasure(2);
    EXPECT_EQ(last(UsageModel::FractionRole), 1.0 / 3) << usage.scale().toStdString();
    QSignalSpy resets(&usage, &UsageModel::modelReset);
    history.add(30, "five six seven");
    ASSERT_TRUE(runUntil([&] { return last(UsageModel::FractionRole) == 1.0; }));
    EXPECT_TRUE(resets.isEmpty());
    usage.setPeriod(2);
    EXPECT_LE(usage.rowCount(), 3);
    EXPECT_FALSE(usage.data(usage.index(0), UsageModel::GroupRole).toString().isEmpty());
    const auto* const choice =
        QAccessible::queryAccessibleInterface(window().findChild<QQuickItem*>("period"));
    EXPECT_TRUE(choice && !choice->text(QAccessible::Name).isEmpty());

    // Two sessions with wrong dates: the chart opens at today and has bars only for what is
    // visible.
    usage.setPeriod(0);
    history.add(-86'400.0 * 3000, "");
    history.add(86'400.0 * 3000, "");
    const auto* const bars = window().findChild<QQuickItem*>("bars");
    ASSERT_TRUE(runUntil([&] {
        return usage.rowCount() > 6000 && bars->property("currentIndex") == usage.latest();
    }));
    EXPECT_NEAR(usage.latest(), 3000, 2);
    EXPECT_LT(bars->property("contentItem").value<QQuickItem*>()->childItems().size(), 200);
}

} // namespace
} // namespace tessarune
