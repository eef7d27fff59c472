// bench-history [RECORDINGS]: what the list of the history costs with so many recordings: to read
// it, to follow a change of one of them, to search as one types, to scroll. README.md says more.

#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"
#include "tests/ui/StagedHistory.h"

#include <QQuickItem>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace tessarune::bench {

namespace {

double processorMS(const std::function<void()>& work) {
    const double began = CPUClock::thread();
    work();
    return (CPUClock::thread() - began) * 1000;
}

void print(const char* what, std::vector<double> times) {
    std::printf("%-34s %8.2f ms, at most %8.2f ms\n", what, Statistics::median(times),
                Statistics::percentile(times, 1));
}

/// An index of that many recordings, which share one file of sound.
void fill(StagedHistory& history, int recordings) {
    const auto sound = (history.paths.recordings() / "sound.wav").string();
    testing::writeContents(sound, std::string(100, 'x'));
    std::string index = "[";
    for (int i = 0; i < recordings; ++i) {
        const UUID id = UUID::random();
        const std::string startedAt = std::to_string(1'700'000'000 - i * 3600);
        index += (i > 0 ? "," : "");
        index += R"({"id":")" + id.text() +
                 R"(","startedAt":"2023-11-14T22:13:20Z","endedAt":)"
                 R"("2023-11-14T22:23:20Z","duration":600,"byteCount":100,"filePath":")" +
                 sound + R"("})";
        testing::writeContents(history.catalog.transcriptURL(id),
                               "Recording " + startedAt + " and what was said in it, in a line.\n");
    }
    testing::writeContents(history.paths.appSupportBase() / "recordings.json", index + "]");
}

int run(int recordings) {
    StagedHistory history;
    history.disk.createDirectories(history.paths.transcripts());
    fill(history, recordings);
    history.open();
    HistoryWindowModel& model = history.window->model();
    if (!runUntil([&] { return model.list()->count() == recordings; })) {
        std::fprintf(stderr, "%d of %d recordings are listed\n", model.list()->count(), recordings);
        return 1;
    }

    // The main thread's own work: the queue reads.
    std::vector<double> changes;
    for (int round = 0; round < 9; ++round) {
        const std::string note = "Note " + std::to_string(round);
        history.catalog.setNote(note, model.list()->item(recordings / 2)->id);
        changes.push_back(processorMS(
            [&] { runUntil([&] { return model.list()->item(recordings / 2)->note == note; }); }));
    }
    print("a change of one recording", changes);

    std::vector<double> keys;
    for (const char* query : {"r", "re", "rec", "what", "what was", "line", "zzz", ""})
        keys.push_back(processorMS([&] { model.setQuery(QString::fromUtf8(query)); }));
    print("a key in the search", keys);

    auto* const list = history.window->window().findChild<QQuickItem*>("recordings");
    std::vector<double> frames;
    const double step = list->height() / 3;
    for (int frame = 0; frame < 300; ++frame)
        frames.push_back(processorMS([&] {
            list->setProperty("contentY", list->property("contentY").toDouble() + step);
            QMetaObject::invokeMethod(list, "forceLayout");
        }));
    print("a third of a page scrolled", frames);

    std::vector<double> jumps;
    for (int jump = 1; jump <= 20; ++jump)
        jumps.push_back(processorMS([&] {
            QMetaObject::invokeMethod(list, "positionViewAtIndex",
                                      Q_ARG(int, recordings* jump / 21), Q_ARG(int, 0));
            QMetaObject::invokeMethod(list, "forceLayout");
        }));
    print("a jump to another place", jumps);
    return 0;
}

} // namespace

} // namespace tessarune::bench

int main(int count, char** words) {
    qputenv("QT_QUICK_BACKEND", "software");
    return tessarune::bench::run(count > 1 ? std::atoi(words[1]) : 10'000);
}
