#include "Tessarune/ui/captions/MenuWindow.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

constexpr int screenMargin = 6;

} // namespace

MenuWindow::MenuWindow() {
    setFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setColor(Qt::transparent);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &MenuWindow::focusMoved);
}

void MenuWindow::openAt(QQuickItem* item, double x, double y) {
    QQuickWindow* const owner = item->window();
    if (!owner || !list_)
        return;
    corner_ = owner->mapToGlobal(item->mapToScene({x, y})).toPoint();
    setTransientParent(owner);
    setScreen(owner->screen());
    // Queued, because the list emits the signal in the middle of its layout.
    connect(list_, SIGNAL(countChanged()), this, SLOT(followList()),
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection));
    connect(list_, SIGNAL(currentItemChanged()), this, SLOT(announceCurrent()),
            Qt::UniqueConnection);
    place();
    owner->removeEventFilter(this);
    owner->installEventFilter(this);
    show();
    setMouseGrabEnabled(true); // a press in another program closes the menu, too
}

/// Gives the window the size that the list needs, at the wanted corner or as near to it as the
/// screen allows.
void MenuWindow::place() {
    const QRect free = screen()->availableGeometry().adjusted(screenMargin, screenMargin,
                                                              -screenMargin, -screenMargin);
    const QSize size = neededSize(free.size());
    setGeometry({QPoint(std::clamp(corner_.x(), free.left(),
                                   std::max(free.left(), free.right() + 1 - size.width())),
                        std::clamp(corner_.y(), free.top(),
                                   std::max(free.top(), free.bottom() + 1 - size.height()))),
                 size});
    contentItem()->setSize(size); // Qt does this only if a visible window changes its size
}

void MenuWindow::followList() {
    if (isVisible())
        place();
}

/// Qt does not report a new current entry to screen readers, because the keyboard focus stays with
/// the window.
void MenuWindow::announceCurrent() {
    if (!QAccessible::isActive())
        return;
    auto* const current = list_->property("currentItem").value<QQuickItem*>();
    if (!isVisible() || !current)
        return;
    // The list's item is the entry itself or a container of the entry.
    for (QQuickItem* const item : QList{current} + current->childItems()) {
        if (!QAccessible::queryAccessibleInterface(item))
            continue;
        QAccessibleEvent focus(item, QAccessible::Focus);
        return QAccessible::updateAccessibility(&focus);
    }
}

/// Gives the list all the available room first: the list creates only the entries that fit, and
/// only created entries can be measured.
QSize MenuWindow::neededSize(const QSize& available) {
    contentItem()->setSize(available);
    QMetaObject::invokeMethod(list_, "forceLayout");
    double width = leastWidth_;
    for (const QQuickItem* entry :
         list_->property("contentItem").value<QQuickItem*>()->childItems())
        width = std::max(width, entry->implicitWidth() + 2 * margin_);
    const double height = list_->property("contentHeight").toDouble() + 2 * margin_;
    return QSize(static_cast<int>(std::ceil(std::min(width, std::max(mostWidth_, leastWidth_)))),
                 static_cast<int>(std::ceil(height)))
        .boundedTo(available);
}

void MenuWindow::focusMoved(const QWindow* window) {
    if (isVisible() && window != this && window != transientParent())
        hide();
}

/// Qt sends a `ShortcutOverride` before each key press. Accepting it keeps the key from a shortcut
/// of the window.
bool MenuWindow::handleKey(QEvent& event) {
    const int key = static_cast<QKeyEvent&>(event).key();
    const bool isEntry = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
    const bool isEdge = key == Qt::Key_Home || key == Qt::Key_End;
    if (!isEntry && !isEdge && key != Qt::Key_Up && key != Qt::Key_Down && key != Qt::Key_Escape &&
        key != Qt::Key_Tab && key != Qt::Key_Backtab)
        return false;
    event.accept();
    if (event.type() == QEvent::ShortcutOverride)
        return true;
    if (key == Qt::Key_Up)
        QMetaObject::invokeMethod(list_, "decrementCurrentIndex");
    else if (key == Qt::Key_Down)
        QMetaObject::invokeMethod(list_, "incrementCurrentIndex");
    else if (isEdge)
        list_->setProperty("currentIndex",
                           key == Qt::Key_Home ? 0 : list_->property("count").toInt() - 1);
    else if (key == Qt::Key_Escape)
        hide();
    else if (auto* const entry = list_->property("currentItem").value<QQuickItem*>();
             isEntry && entry && !static_cast<QKeyEvent&>(event).isAutoRepeat())
        QMetaObject::invokeMethod(entry, "press");
    return true;
}

bool MenuWindow::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (!QRect({}, size()).contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
            hide();
            return true;
        }
        break;
    case QEvent::KeyPress:
        if (handleKey(*event))
            return true;
        break;
    case QEvent::Hide:
        setMouseGrabEnabled(false);
        if (QGuiApplication::focusWindow() == this && transientParent())
            transientParent()->requestActivate();
        break;
    default:
        break;
    }
    return QQuickWindow::event(event);
}

bool MenuWindow::eventFilter(QObject* watched, QEvent* event) {
    if (isVisible() && watched == transientParent()) {
        if (event->type() == QEvent::MouseButtonPress) {
            hide();
            return true;
        }
        if ((event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) &&
            handleKey(*event))
            return true;
        if (event->type() == QEvent::Hide || event->type() == QEvent::Move ||
            event->type() == QEvent::Resize)
            hide();
    }
    return QQuickWindow::eventFilter(watched, event);
}

} // namespace tessarune
