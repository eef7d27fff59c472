#include "Tessarune/platform/qt-host/LostDisplay.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

namespace tessarune {

namespace {

/// How long a thread waits for another one that does the last work; the work takes less time.
constexpr unsigned long longestWaitMS = 10'000;
/// If the main thread waits for another thread and uses no processor time for this long, it is
/// taken to be waiting for the rendering thread.
constexpr unsigned long blockedMS = 1'000;
constexpr unsigned long checkMS = 50;

struct PendingWork {
    std::function<void()> work;
    std::atomic<bool> isTaken = false; ///< by the thread that does it
    pthread_t mainThread{};
    std::string mainThreadCall; ///< the file that names the system call in which it waits
};

PendingWork& pending() {
    static PendingWork pending;
    return pending;
}
QtMessageHandler previousHandler = nullptr;

/// Does the work and ends the process. Does nothing if there is no work. If another thread has
/// taken the work, waits for that thread to end the process.
void doLastWork() {
    if (!pending().work)
        return;
    if (pending().isTaken.exchange(true)) {
        QThread::msleep(longestWaitMS); // meanwhile the other thread ends the process
        return;
    }
    pending().work();
    std::_Exit(EXIT_FAILURE); // other threads still use objects that an orderly exit destroys
}

/// The nanoseconds of processor time that the main thread has used.
long long processorTimeOfMainThread() {
    clockid_t clock{};
    timespec used{};
    if (pthread_getcpuclockid(pending().mainThread, &clock) != 0 ||
        clock_gettime(clock, &used) != 0)
        return 0;
    return used.tv_sec * 1'000'000'000LL + used.tv_nsec;
}

/// False while the main thread waits for something other than a thread, such as a slow disk. The
/// main thread then continues soon, so no other thread may use its objects.
bool mayMainThreadWaitForAThread() {
    std::ifstream file(pending().mainThreadCall);
    std::string call; // its number and arguments; empty if the kernel does not say
    std::getline(file, call);
    return call.empty() || call.starts_with(std::to_string(SYS_futex) + " ");
}

/// The rendering thread may notice the loss first. If it returned to Xlib, Xlib would end the
/// process, so it stays here. The main thread may be blocked, waiting for the rendering thread, and
/// then never reaches the queued work; in that case the rendering thread does the work itself.
void doLastWorkOnMainThread() {
    QCoreApplication* const application = QCoreApplication::instance();
    if (application && QThread::currentThread() != application->thread()) {
        QMetaObject::invokeMethod(application, doLastWork, Qt::QueuedConnection);
        long long used = processorTimeOfMainThread();
        for (unsigned long idleMS = 0; idleMS < blockedMS && !pending().isTaken;) {
            QThread::msleep(checkMS);
            const long long now = processorTimeOfMainThread();
            const bool isIdle = std::exchange(used, now) == now && mayMainThreadWaitForAThread();
            idleMS = isIdle ? idleMS + checkMS : 0;
        }
    }
    doLastWork();
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
    pending().work = std::move(lastWork);
    pending().mainThread = pthread_self();
    pending().mainThreadCall = "/proc/self/task/" + std::to_string(gettid()) + "/syscall";
    previousHandler = qInstallMessageHandler(watchMessages);
    // The fallback if Qt's message has another text. It runs later, when some static objects may
    // already be destroyed.
    static const int once = std::atexit(doLastWork);
    Q_UNUSED(once);
}

LostDisplay::~LostDisplay() {
    pending().work = {};
    qInstallMessageHandler(previousHandler);
}

} // namespace tessarune
