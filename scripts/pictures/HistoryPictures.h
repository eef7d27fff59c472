#pragma once

#include "tests/ui/StagedHistory.h"

#include <QObject>
#include <QQuickItem>
#include <QString>
#include <functional>

namespace tessarune {

/// A state of the history window, to be drawn.
struct HistoryPicture {
    const char* name;
    std::function<void(StagedHistory&)> stage;    ///< before the window opens
    std::function<void(StagedHistory&)> act = {}; ///< with the window open
};

inline void fillHistory(StagedHistory& history) {
    const char* const text = "It was the best of times, it was the worst of times.\n"
                             "It was the age of wisdom, it was the age of foolishness.\n"
                             "It was the epoch of belief, it was the epoch of incredulity, and "
                             "nobody in the whole of the city could have told you which of the two "
                             "would win.\nWe had everything before us.";
    const char* const bilingual =
        "It was the best of times, it was the worst of "
        "times.\n那是最美好的时代，那是最糟糕的时代。\n\n"
        "It was the age of wisdom, it was the age of "
        "foolishness.\n那是智慧的年代，那是愚昧的年代。\n\n"
        "It was the epoch of belief, it was the epoch of incredulity, and nobody in the whole of "
        "the city could have told you which of the two would win.\n"
        "那是信仰的时期，那是怀疑的时期，全城没有一个人能告诉你两者之中哪一个会取胜。\n\n"
        "We had everything before us.\n我们面前应有尽有。";
    history.add(40, "", "", true);
    history.time(history.add(3'600, text, bilingual), 4);
    history.catalog.setNote("Weekly review: the two cities",
                            history.add(7'200, "Welcome.", "a\nb"));
    history.add(90'000, "Good morning everybody, let us begin with the numbers of last month.");
    history.add(93'000, "");
    for (int day = 3; day < 9; ++day)
        history.add(86'400.0 * day, "A session about one thing or another, and what came of it.");
}

/// Fills two months with busy and empty days.
inline void fillMonths(StagedHistory& history) {
    fillHistory(history);
    for (int day = 10; day < 64; ++day) {
        for (int session = 0; session < day * 7 % 5; ++session)
            history.add(86'400.0 * day + 900.0 * session, std::string(40, 'a') + " b c");
    }
}

inline HistoryWindowModel& modelOf(StagedHistory& history) {
    return history.window->model();
}

inline void choose(StagedHistory& history, int row) {
    modelOf(history).setCurrentRow(row);
    runFor(200);
}

inline void click(StagedHistory& history, const char* name, const char* method = "clicked") {
    QMetaObject::invokeMethod(history.window->window().findChild<QObject*>(name), method);
}

inline void importFiles(StagedHistory& history) {
    history.isCopyHeld = true;
    modelOf(history).imports()->add({history.file("Interview with the mayor.mp3", "sound"),
                                     history.file("Lecture 4.mkv", "sound"),
                                     QUrl("https://example.org/talk.mp3")});
}

inline void refine(StagedHistory& history) {
    choose(history, 1);
    modelOf(history).refinement()->refresh();
    modelOf(history).refinement()->refine(0);
}

inline void openWords(StagedHistory& history) {
    choose(history, 1);
    for (const char* word : {"time", "age", "city"})
        history.vocabulary->addFavorite(word);
    for (const char* word : {"the", "it", "be", "of", "time"})
        history.vocabulary->markMastered(word);
    click(history, "openWords");
    runFor(300);
}

inline void openUsage(StagedHistory& history) {
    modelOf(history).openUsage();
    runUntil([&] { return modelOf(history).usage()->rowCount() > 0; });
}

inline const HistoryPicture historyPictures[] = {
    {"bilingual", fillHistory, [](auto& h) { choose(h, 1); }},
    {"playing", fillHistory,
     [](auto& h) {
         choose(h, 1);
         modelOf(h).playback()->playRow(2);
     }},
    {"source", fillHistory,
     [](auto& h) {
         choose(h, 3);
         modelOf(h).setQuery("a");
     }},
    {"running", fillHistory},
    {"no-text", fillHistory, [](auto& h) { choose(h, 4); }},
    {"export", fillHistory,
     [](auto& h) {
         choose(h, 1);
         click(h, "exportPanel", "open");
     }},
    {"deleted", fillHistory,
     [](auto& h) {
         choose(h, 2);
         modelOf(h).deleteCurrent();
     }},
    {"importing", fillHistory, importFiles},
    {"refine", fillHistory,
     [](auto& h) {
         choose(h, 1);
         click(h, "refinePanel", "open");
     }},
    {"refining",
     [](auto& h) {
         h.hearsForever = true;
         fillHistory(h);
     },
     refine},
    {"refinement-failed",
     [](auto& h) {
         h.failure = "tiny-en: the file of the model is damaged";
         fillHistory(h);
     },
     refine},
    {"words", fillHistory, openWords},
    {"word", fillHistory,
     [](auto& h) {
         openWords(h);
         auto* const list = h.window->window().template findChild<QQuickItem*>("words");
         list->forceActiveFocus();
         list->setProperty("currentIndex", 3);
     }},
    {"words-narrow", fillHistory,
     [](auto& h) {
         h.window->window().resize(h.window->window().minimumSize());
         openWords(h);
     }},
    {"vocabulary", fillHistory,
     [](auto& h) {
         openWords(h);
         modelOf(h).openVocabulary();
     }},
    {"vocabulary-empty", fillHistory, [](auto& h) { modelOf(h).openVocabulary(); }},
    {"usage", fillMonths, openUsage},
    {"usage-months", fillMonths,
     [](auto& h) {
         openUsage(h);
         modelOf(h).usage()->setPeriod(2);
         modelOf(h).usage()->setMeasure(1);
     }},
    {"usage-empty", [](auto&) {}, [](auto& h) { modelOf(h).openUsage(); }},
    {"nothing-found", fillHistory, [](auto& h) { modelOf(h).setQuery("xyz"); }},
    {"empty", [](auto&) {}},
};

/// Draws all states into PNG files with `save`. Returns false if a file cannot be written.
template <typename Save>
bool drawHistory(const QString& folder, const char* shade, Save save) {
    for (const HistoryPicture& picture : historyPictures) {
        StagedHistory history;
        picture.stage(history);
        history.open();
        runUntil([&] { return !modelOf(history).list()->isLoading(); });
        runFor(300);
        if (picture.act)
            picture.act(history);
        runFor(400);
        const QString name = QStringLiteral("/history-%1-%2.png")
                                 .arg(QString::fromUtf8(picture.name), QString::fromUtf8(shade));
        if (!save(history.window->window(), folder + name))
            return false;
    }
    return true;
}

} // namespace tessarune
