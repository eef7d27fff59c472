#include "Tessarune/ui/desktop/WindowLog.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <QGuiApplication>
#include <QTimer>
#include <string>

namespace tessarune {

namespace {

constexpr int settledMS = 500; // a window that is being resized is not logged at every step

void logWindow(const char* what, const QWindow& window) {
    TessaruneLog::ui.info([&] {
        return std::string("=== ").append(what) + " === Window '" + window.title().toStdString() +
               "', contentView size: " + std::to_string(window.width()) + "x" +
               std::to_string(window.height());
    });
}

} // namespace

WindowLog::WindowLog() {
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this,
            [this](QWindow* window) { focusChanged(window); });
}

void WindowLog::focusChanged(QWindow* window) {
    if (!window || window->title().isEmpty())
        return;
    if (!known_.contains(window)) {
        known_.insert(window);
        logWindow("INITIAL WINDOW", *window);
        auto* const settleTimer = new QTimer(window);
        settleTimer->setSingleShot(true);
        settleTimer->setInterval(settledMS);
        connect(settleTimer, &QTimer::timeout, window,
                [window] { logWindow("WINDOW RESIZED", *window); });
        const auto resized = [settleTimer] { settleTimer->start(); };
        connect(window, &QWindow::widthChanged, settleTimer, resized);
        connect(window, &QWindow::heightChanged, settleTimer, resized);
        connect(window, &QObject::destroyed, this, [this, window] { known_.remove(window); });
    }
    logWindow("WINDOW KEY", *window);
}

} // namespace tessarune
