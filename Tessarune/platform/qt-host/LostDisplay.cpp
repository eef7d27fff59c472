#include "Tessarune/platform/qt-host/LostDisplay.h"

#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <cstdlib>
#include <utility>

namespace tessarune {

namespace {

/// Longer than the last work takes.
constexpr unsigned long longestWaitMS = 10'000;

std::function<void()>& pendingWork() {
    static std::function<void()> work;
    return work;
}
QtMessageHandler previousHandler = nullptr;

void doLastWork() {
    if (const auto work = std::exchange(pendingWork(), {})) {
        work();
        std::_Exit(EXIT_FAILURE); // other threads still use objects that an orderly exit destroys
    }
}

/// The rendering thread may notice the loss first, but the work must run on the main thread.
void doLastWorkOnMainThread() {
    QCoreApplication* const application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread()) {
        doLastWork();
        return;
    }
    QMetaObject::invokeMethod(application, doLastWork, Qt::QueuedConnection);
    QThread::msleep(longestWaitMS); // the work ends the process
}

/// Qt logs these messages right before it ends the process, while the program is still intact.
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
    // The fallback if Qt logs another message: it runs later, when some static objects may already
    // be destroyed.
    static const int once = std::atexit(doLastWork);
    Q_UNUSED(once);
}

LostDisplay::~LostDisplay() {
    pendingWork() = {};
    qInstallMessageHandler(previousHandler);
}

} // namespace tessarune
