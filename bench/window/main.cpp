#include "bench/support/Statistics.h"
#include "bench/window/FirstPicture.h"
#include "bench/window/StagedWindow.h"

#include <sysexits.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Measures the caption window. `bench/window/run` runs all measurements on a display of its own.
///
///     bench-window frames            from a change of the captions to the frame on the screen
///     bench-window scrolling         a frame during scrolling through 10,000 rows
///     bench-window hour              an hour of captions, one change after the other
///     bench-window first PROGRAM...  from the start of a program to its first picture
///     bench-window bare              a window with a line of text, for comparison

namespace tessarune {
namespace {

constexpr int rounds = 12;
constexpr int changesEachRound = 25;
/// The first changes of each round are not measured: the caches still have the data of another
/// window.
constexpr int warmUps = 5;

int measureFrames() {
    QtHost host;
    constexpr std::array<std::size_t, 3> lengths{10, 1000, 10'000};
    std::array<std::unique_ptr<StagedWindow>, 3> windows;
    std::array<std::vector<double>, 3> words;
    std::array<std::vector<double>, 3> rows;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            // Only one window at a time, because an open window runs its animations.
            windows[i] = std::make_unique<StagedWindow>(host, lengths[i]);
            for (int change = 0; change < changesEachRound; ++change) {
                windows[i]->speak();
                const double word = windows[i]->show();
                windows[i]->settle();
                const double row = windows[i]->show();
                if (change < warmUps)
                    continue;
                words[i].push_back(word * 1000);
                rows[i].push_back(row * 1000);
            }
            windows[i].reset();
        }
    }
    const auto print = [&](const char* what, const auto& times) {
        std::printf("| %s |", what);
        for (const auto& each : times)
            std::printf(" %.2f, %.2f ms |", Statistics::median(each),
                        Statistics::percentile(each, 0.99));
        std::printf(" %.2f |\n",
                    Statistics::median(times.back()) / Statistics::median(times.front()));
    };
    std::puts("| Committed rows (median, 99 %) | 10 | 1,000 | 10,000 | Last over first |");
    std::puts("|---|---|---|---|---|");
    print("a word is spoken", words);
    print("a row settles", rows);
    return 0;
}

/// Scrolls back from the newest of 10,000 rows, partly while words are spoken, and in the end
/// measures the return to the newest row.
int measureScrolling() {
    QtHost host;
    StagedWindow window(host, 10'000);
    QQuickItem* const list = window.list();
    std::puts("| 10,000 rows | Median | 99 % | Maximum | Over 16.7 ms |");
    std::puts("|---|---|---|---|---|");
    const auto measure = [](const char* what, int steps, const std::function<double()>& step) {
        std::vector<double> times;
        for (int i = 0; i < steps; ++i)
            times.push_back(step() * 1000);
        std::printf("| %s | %.2f ms | %.2f ms | %.2f ms | %.1f %% |\n", what,
                    Statistics::median(times), Statistics::percentile(times, 0.99),
                    *std::ranges::max_element(times),
                    100.0 *
                        static_cast<double>(std::ranges::count_if(
                            times, [](double ms) { return ms > 1000.0 / 60; })) /
                        steps);
    };
    const auto position = [&] { return list->property("contentY").toDouble(); };
    const auto moveBy = [&](double distance) {
        return window.present([&] { list->setProperty("contentY", position() + distance); });
    };
    const auto byKey = [&](Qt::Key key) {
        return window.present([&] {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
            QCoreApplication::sendEvent(list->window(), &press);
        });
    };
    list->window()->requestActivate();
    byKey(Qt::Key_PageUp); // the list stops following the newest row
    measure("a frame of a slow flick, 12 pixels", 600, [&] { return moveBy(-12); });
    measure("a frame of a fast flick, 200 pixels", 600, [&] { return moveBy(-200); });
    measure("the same while words are spoken", 600, [&] {
        window.speak();
        window.show();
        return moveBy(-200);
    });
    const double before = position();
    measure("Page Up", 200, [&] { return byKey(Qt::Key_PageUp); });
    if (before - position() < 200 * 100) { // at least 100 pixels for each of 200 key presses
        std::fputs("bench-window: Page Up did not scroll the list as far as expected\n", stderr);
        return 1;
    }
    measure("Page Up and End", 50, [&] {
        byKey(Qt::Key_PageUp);
        return byKey(Qt::Key_End);
    });
    return 0;
}

/// The memory of this process, without memory that is mapped from files.
double ownMegabytes() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    for (std::string word; rollup >> word;) {
        if (double kilobytes = 0; word == "Anonymous:" && rollup >> kilobytes)
            return kilobytes * 1024 / 1e6;
    }
    return 0;
}

/// Shows 720 sentences of twelve words: an hour of speech at 144 words a minute.
int measureHour() {
    QtHost host;
    StagedWindow window(host, 0);
    constexpr int sentences = 720;
    constexpr int wordsEach = 12;
    constexpr int part = sentences / 12; // five minutes
    std::puts("| Minute | Own memory | Frame, median | 99 % |");
    std::puts("|---|---|---|---|");
    std::vector<double> times;
    for (int sentence = 1; sentence <= sentences; ++sentence) {
        for (int word = 0; word < wordsEach; ++word) {
            window.speak();
            times.push_back(window.show() * 1000);
        }
        window.settle();
        window.show();
        if (sentence % part == 0) {
            std::printf("| %d | %.1f MB | %.2f ms | %.2f ms |\n", sentence / part * 5,
                        ownMegabytes(), Statistics::median(times),
                        Statistics::percentile(times, 0.99));
            std::fflush(stdout);
            times.clear();
        }
    }
    return 0;
}

int showBareWindow(QGuiApplication& application) {
    QQuickView view;
    QQmlComponent component(view.engine());
    component.setData("import QtQuick\nRectangle { width: 940; height: 400; color: 'black'; "
                      "Text { text: 'Captions'; color: 'white'; font.pixelSize: 24 } }",
                      QUrl());
    view.setContent(QUrl(), &component, component.create());
    view.show();
    return application.exec();
}

int measureFirst(std::vector<std::string> command) {
    const FirstPicture picture = FirstPicture::of(command);
    std::printf("%.3f %.4f %.1f\n", picture.seconds, picture.processorSeconds, picture.megabytes);
    return 0;
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "first" && argc > 2) {
        try {
            return tessarune::measureFirst({argv + 2, argv + argc});
        } catch (const std::exception& error) {
            std::fprintf(stderr, "bench-window: %s\n", error.what());
            return 1;
        }
    }
    QGuiApplication application(argc, argv);
    if (what == "frames")
        return tessarune::measureFrames();
    if (what == "scrolling")
        return tessarune::measureScrolling();
    if (what == "hour")
        return tessarune::measureHour();
    if (what == "bare")
        return tessarune::showBareWindow(application);
    std::fputs("bench-window frames | scrolling | hour | first PROGRAM... | bare\n", stderr);
    return EX_USAGE;
}
