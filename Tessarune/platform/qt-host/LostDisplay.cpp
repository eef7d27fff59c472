#include "Tessarune/platform/qt-host/LostDisplay.h"

#include <dlfcn.h>

#include <QGuiApplication>
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

/// The functions of Xlib that set what it does when its connection is lost. They are looked up in
/// the library that Qt has loaded; `setExitHandler` is missing before version 1.7.
struct XlibHandlers {
    using OnError = int (*)(Display*);
    using OnExit = void (*)(Display*, void*);
    OnError (*setErrorHandler)(OnError) = nullptr;
    void (*setExitHandler)(Display*, OnExit, void*) = nullptr;

    XlibHandlers() {
        void* const xlib = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
        if (!xlib)
            return;
        setErrorHandler =
            reinterpret_cast<decltype(setErrorHandler)>(dlsym(xlib, "XSetIOErrorHandler"));
        setExitHandler =
            reinterpret_cast<decltype(setExitHandler)>(dlsym(xlib, "XSetIOErrorExitHandler"));
    }
};

/// Lets a call of Xlib return with a failure if the connection is lost. By default it ends the
/// process, on any thread: on the rendering thread, for which the main thread may be waiting, the
/// last work could then neither run nor be waited for. Qt's own events find the loss as well, on
/// the main thread, and end the process.
void returnFromXlib() {
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    const XlibHandlers xlib;
    if (!x11 || !xlib.setErrorHandler || !xlib.setExitHandler)
        return;
    xlib.setErrorHandler([](Display*) {
        qWarning("The connection to the X server was lost.");
        QMetaObject::invokeMethod(qGuiApp, doLastWork, Qt::QueuedConnection);
        return 0;
    });
    xlib.setExitHandler(
        x11->display(), [](Display*, void*) {}, nullptr);
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
    returnFromXlib();
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
