#include "Tessarune/ui/controls/ScreenFit.h"

#include <QEvent>
#include <QScreen>
#include <utility>

namespace tessarune {

ScreenFit::ScreenFit(QWindow& window) : QObject(&window), window_(window) {
    // The minimum size follows the text size of the desktop. `fitSoon` waits, because the window's
    // own size may change right after the minimum size.
    connect(&window, &QWindow::minimumWidthChanged, this, &ScreenFit::fitSoon);
    connect(&window, &QWindow::minimumHeightChanged, this, &ScreenFit::fitSoon);
    connect(&window, &QWindow::screenChanged, this, &ScreenFit::fitSoon);
    window.installEventFilter(this);
    fit();
}

bool ScreenFit::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Expose && !std::exchange(wasExposed_, true))
        fitSoon(); // the window now has its frame
    return QObject::eventFilter(watched, event);
}

void ScreenFit::fitSoon() {
    QMetaObject::invokeMethod(this, &ScreenFit::fit, Qt::QueuedConnection);
}

void ScreenFit::fit() {
    if (!window_.screen())
        return;
    const QMargins frame = window_.frameMargins();
    const QSize room = window_.screen()->availableSize().shrunkBy(frame);
    window_.setMinimumSize(window_.minimumSize().boundedTo(room));
    if (!(window_.windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen)))
        window_.resize(window_.size().boundedTo(room));
}

} // namespace tessarune
