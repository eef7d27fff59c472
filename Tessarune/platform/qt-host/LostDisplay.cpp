#include "Tessarune/platform/qt-host/LostDisplay.h"

#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <cstdlib>
#include <utility>

namespace tessarune {

namespace {

/// Longer than the work takes.
constexpr unsigned long longestWaitMS = 10'000;

std::function<void()>& pendingWork() {
    static std::function<void()> work;
    return work;
}
QtMessageHandler previousHandler = nullptr;

void doLastWork() {
    if (const auto work = std::exchange(pendingWork(), {})) {
        work();
        std::_Exit(EXIT_FAILURE); // other threads still use what an orderly exit destroys
    }
}

/// The drawing thread may notice first, but the program belongs to the main thread.
void doLastWorkOnMainThread() {
    QCoreApplication* const application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread()) {
        doLastWork();
        return;
    }
    QMetaObject::invokeMethod(application, doLastWork, Qt::QueuedConnection);
    QThread::msleep(longestWaitMS); // the work ends the process
}

/// Qt logs this right before it ends the process, while all of the program is still intact.
void watchMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (previousHandler)
        previousHandler(type, context, text);
    if (text.startsWith(QLatin1String("The X11 connection broke")) ||
        text.startsWith(QLatin1String("The Wayland connection")))
        doLastWorkOnMainThread();
}

} // namespace

LostDisplay::LostDisplay(std::function<void()> lastWork) {
    pendingWork() = std::move(lastWork);
    previousHandler = qInstallMessageHandler(watchMessages);
    // The fallback if Qt's message differs: it runs later, when some of the program's constants may
    // be gone.
    static const int once = std::atexit(doLastWork);
    Q_UNUSED(once);
}

LostDisplay::~LostDisplay() {
    pendingWork() = {};
    qInstallMessageHandler(previousHandler);
}

} // namespace tessarune
