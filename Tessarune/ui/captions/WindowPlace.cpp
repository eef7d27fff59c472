#include "Tessarune/ui/captions/WindowPlace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <utility>

namespace tessarune {

namespace {

constexpr int settledMS = 1000;
constexpr int rearrangedMS = 2000;
/// At least this much of the window must be on a screen.
constexpr QSize leastVisible(120, 60);

QString textOf(const QRect& rect) {
    return QStringLiteral("%1x%2+%3+%4")
        .arg(rect.width())
        .arg(rect.height())
        .arg(rect.x())
        .arg(rect.y());
}

bool canBeGrabbed(const QRect& rect) {
    return std::ranges::any_of(QGuiApplication::screens(), [&](const QScreen* screen) {
        const QRect visible = screen->availableGeometry() & rect;
        return visible.width() >= leastVisible.width() && visible.height() >= leastVisible.height();
    });
}

} // namespace

WindowPlace::WindowPlace(QWindow& window, UserDefaults& store, std::string name)
    : window_(window), store_(store), name_(std::move(name)) {
    settled_.setSingleShot(true);
    settled_.setInterval(settledMS);
    QObject::connect(&settled_, &QTimer::timeout, &settled_, [this] { save(); });
    rearranged_.setSingleShot(true);
    rearranged_.setInterval(rearrangedMS);
    QObject::connect(&rearranged_, &QTimer::timeout, &rearranged_, [this] {
        if (!isNormal_)
            return;
        restore();
        fetchBack();
    });
    const auto onScreensChanged = [this] { screensChanged(); };
    const auto follow = [this, onScreensChanged](const QScreen* screen) {
        QObject::connect(screen, &QScreen::geometryChanged, &rearranged_, onScreensChanged);
    };
    std::ranges::for_each(QGuiApplication::screens(), follow);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &rearranged_, follow);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &rearranged_, onScreensChanged);
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &rearranged_, onScreensChanged);
    const auto onMoved = [this] { moved(); };
    QObject::connect(&window, &QWindow::xChanged, &settled_, onMoved);
    QObject::connect(&window, &QWindow::yChanged, &settled_, onMoved);
    QObject::connect(&window, &QWindow::widthChanged, &settled_, onMoved);
    QObject::connect(&window, &QWindow::heightChanged, &settled_, onMoved);
    QObject::connect(&window, &QWindow::visibilityChanged, &settled_,
                     [this](QWindow::Visibility now) {
                         if (now == QWindow::Hidden)
                             save();
                         else if (now != QWindow::Minimized)
                             isNormal_ = now == QWindow::Windowed;
                     });
}

std::string WindowPlace::key() const {
    QStringList screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens << textOf(screen->geometry());
    screens.sort();
    return name_ + " " + screens.join(' ').toStdString();
}

/// Ignores moves for a while, because the desktop now moves windows itself.
void WindowPlace::screensChanged() {
    settled_.stop();
    rearranged_.start();
}

void WindowPlace::moved() {
    if (window_.isVisible() && !rearranged_.isActive())
        settled_.start();
}

void WindowPlace::restore() {
    const auto stored = store_.value(key());
    const auto* const text = stored ? std::get_if<std::string>(&*stored) : nullptr;
    if (!text)
        return;
    int width = 0;
    int height = 0;
    int x = 0;
    int y = 0;
    if (std::sscanf(text->c_str(), "%dx%d+%d+%d", &width, &height, &x, &y) != 4)
        return;
    const QRect rect(x, y, std::max(width, window_.minimumWidth()),
                     std::max(height, window_.minimumHeight()));
    if (canBeGrabbed(rect))
        window_.setGeometry(rect);
}

/// Moves the window to the primary screen if too little of it is on any screen.
void WindowPlace::fetchBack() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen || canBeGrabbed(window_.geometry()))
        return;
    QRect rect = window_.geometry();
    rect.moveCenter(screen->availableGeometry().center());
    window_.setGeometry(rect);
}

void WindowPlace::save() {
    settled_.stop();
    if (isNormal_ && !rearranged_.isActive())
        store_.set(key(), textOf(window_.geometry()).toStdString());
}

} // namespace tessarune
