#pragma once

#include "tests/ui/StagedHistory.h"

#include <QObject>
#include <QString>
#include <functional>

namespace tessarune {

struct HistoryPicture {
    const char* name;
    std::function<void(StagedHistory&)> stage;
    std::function<void(HistoryWindow&)> act = {};
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

inline void choose(HistoryWindow& window, int row) {
    window.model().setCurrentRow(row);
}

inline const HistoryPicture historyPictures[] = {
    {"bilingual", fillHistory, [](auto& w) { choose(w, 1); }},
    {"source", fillHistory,
     [](auto& w) {
         choose(w, 3);
         w.model().setQuery("a");
     }},
    {"running", fillHistory},
    {"export", fillHistory,
     [](auto& w) {
         choose(w, 1);
         QMetaObject::invokeMethod(w.window().template findChild<QObject*>("exportPanel"), "open");
     }},
    {"deleted", fillHistory,
     [](auto& w) {
         choose(w, 2);
         w.model().deleteCurrent();
     }},
    {"nothing-found", fillHistory, [](auto& w) { w.model().setQuery("xyz"); }},
    {"empty", [](auto&) {}},
};

template <typename Save>
bool drawHistory(const QString& folder, const char* shade, Save save) {
    for (const HistoryPicture& picture : historyPictures) {
        StagedHistory history;
        picture.stage(history);
        history.open();
        history.runFor(300);
        if (picture.act)
            picture.act(*history.window);
        history.runFor(400);
        const QString name = QStringLiteral("/history-%1-%2.png")
                                 .arg(QString::fromUtf8(picture.name), QString::fromUtf8(shade));
        if (!save(history.window->window(), folder + name))
            return false;
    }
    return true;
}

} // namespace tessarune
