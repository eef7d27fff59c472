// bench-history [RECORDINGS]: measures the list of the history with this number of recordings:
// reading it, following the change of a recording, searching while one types, scrolling, writing
// notes and deleting. See README.md.

#include "TessaruneCore/text/ISO8601Date.h"
#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"
#include "tests/ui/StagedHistory.h"

#include <QQuickItem>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

namespace tessarune::bench {

namespace {

double processorMS(const std::function<void()>& work, double (*clock)() = CPUClock::thread) {
    const double began = clock();
    work();
    return (clock() - began) * 1000;
}

/// The memory of this process without the pages of files.
double ownMegabytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::string word;
    while (file >> word && word != "Anonymous:")
        ;
    double kibibytes = 0;
    file >> kibibytes;
    return kibibytes * 1024 / 1e6;
}

void print(const char* what, std::vector<double> times) {
    std::printf("%-34s %8.2f ms, at most %8.2f ms\n", what, Statistics::median(times),
                Statistics::percentile(times, 1));
}

/// Writes a catalog with this number of recordings, their sound files and their transcripts.
void fill(StagedHistory& history, int recordings) {
    std::string index = "[";
    for (int i = 0; i < recordings; ++i) {
        const UUID id = UUID::random();
        const auto sound = (history.paths.recordings() / (id.text() + ".wav")).string();
        testing::writeContents(sound, std::string(100, 'x'));
        const double began = 1'700'000'000.0 - i * 3600;
        const std::string startedAt = ISO8601Date::text(began);
        index += (i > 0 ? "," : "");
        index += R"({"id":")" + id.text() + R"(","startedAt":")" + startedAt + R"(","endedAt":")" +
                 ISO8601Date::text(began + 600) +
                 R"(","duration":600,"byteCount":100,"filePath":")" + sound + R"("})";
        testing::writeContents(history.catalog.transcriptURL(id),
                               "Recording " + startedAt + " and what was said in it, in a line.\n");
    }
    testing::writeContents(history.paths.appSupportBase() / "recordings.json", index + "]");
}

int run(int recordings) {
    StagedHistory history;
    history.disk.createDirectories(history.paths.transcripts());
    fill(history, recordings);
    const double before = ownMegabytes();
    history.open();
    HistoryWindowModel& model = history.window->model();
    const auto waitFor = [](const std::function<bool()>& condition) {
        while (!runUntil(condition))
            ;
    };
    const auto read = [&] { return model.list()->count() == recordings; };
    double onMain = 0;
    const double all =
        processorMS([&] { onMain = processorMS([&] { waitFor(read); }); }, CPUClock::process);
    std::printf("%-34s %8.2f ms, of these %.2f on the main thread; %.1f MB\n", "the list is read",
                all, onMain, ownMegabytes() - before);

    // Measures only the work of the main thread, not the reading of the catalog on a queue.
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

    // Measures the work of all threads, because the catalog writes on another thread.
    std::vector<double> notes;
    std::vector<double> notesOnMain;
    for (int round = 0; round < 9; ++round) {
        model.setCurrentRow(recordings / 3 + round);
        history.runFor(300);
        const QString note = QStringLiteral("Own note %1").arg(round);
        notesOnMain.push_back(0);
        notes.push_back(processorMS(
            [&] {
                notesOnMain.back() = processorMS([&] { model.setNote(note); });
                waitFor([&] { return model.detail()->note() == note; });
            },
            CPUClock::process));
    }
    print("a note is written and listed", notes);
    print("of that the main thread's call", notesOnMain);

    std::vector<double> deletions;
    for (int round = 1; round <= 9; ++round) {
        history.runFor(300);
        deletions.push_back(processorMS([&] {
            model.deleteCurrent();
            model.dismissMessage();
        }));
        waitFor(
            [&] { return history.catalog.recordings().size() == std::size_t(recordings - round); });
    }
    print("a deletion, on the main thread", deletions);
    return 0;
}

} // namespace

} // namespace tessarune::bench

int main(int count, char** words) {
    qputenv("QT_QUICK_BACKEND", "software");
    return tessarune::bench::run(count > 1 ? std::atoi(words[1]) : 10'000);
}
