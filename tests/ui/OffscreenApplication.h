#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>
#include <functional>

namespace tessarune {

/// The one application object of a test program; it needs no display. Its screen has 800 x 800
/// pixels unless the first call passes another `platform`.
inline QGuiApplication& offscreenApplication(const QByteArray& platform = "offscreen") {
    static int argc = 1;
    static char name[] = "ui-tests";
    static char* argv[] = {name, nullptr};
    static const bool isOffscreen = qputenv("QT_QPA_PLATFORM", platform);
    // Never destroyed: Qt's static objects may be gone before those of the program.
    static auto* const application = new QGuiApplication(argc, argv);
    Q_UNUSED(isOffscreen);
    return *application;
}

/// Runs the event loop until the condition holds; false if it does not within ten seconds.
inline bool runUntil(const std::function<bool()>& condition) {
    QElapsedTimer running;
    running.start();
    QTimer waking; // processEvents does not wait if it has a time limit
    waking.start(20);
    while (!condition()) {
        if (running.hasExpired(10'000))
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

inline void runFor(int milliseconds) {
    QElapsedTimer running;
    running.start();
    while (!running.hasExpired(milliseconds))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
}

} // namespace tessarune
