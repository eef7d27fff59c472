#include "Tessarune/ui/captions/CaptionWindowPlace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

constexpr int settledMS = 1000;
/// So much of the window must be on a screen.
constexpr QSize leastVisible(120, 60);

QString textOf(const QRect& rect) {
    return QStringLiteral("%1x%2+%3+%4")
        .arg(rect.width())
        .arg(rect.height())
        .arg(rect.x())
        .arg(rect.y());
}

bool canBeTakenHoldOf(const QRect& rect) {
    return std::ranges::any_of(QGuiApplication::screens(), [&](const QScreen* screen) {
        const QRect visible = screen->availableGeometry() & rect;
        return visible.width() >= leastVisible.width() && visible.height() >= leastVisible.height();
    });
}

} // namespace

CaptionWindowPlace::CaptionWindowPlace(QWindow& window, UserDefaults& store)
    : window_(window), store_(store) {
    settled_.setSingleShot(true);
    settled_.setInterval(settledMS);
    QObject::connect(&settled_, &QTimer::timeout, &settled_, [this] { save(); });
    const auto moved = [this] {
        if (window_.isVisible())
            settled_.start();
    };
    QObject::connect(&window, &QWindow::xChanged, &settled_, moved);
    QObject::connect(&window, &QWindow::yChanged, &settled_, moved);
    QObject::connect(&window, &QWindow::widthChanged, &settled_, moved);
    QObject::connect(&window, &QWindow::heightChanged, &settled_, moved);
}

std::string CaptionWindowPlace::key() {
    QStringList screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens << textOf(screen->geometry());
    screens.sort();
    return "captionWindowPlace " + screens.join(' ').toStdString();
}

void CaptionWindowPlace::restore() {
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
    if (canBeTakenHoldOf(rect))
        window_.setGeometry(rect);
}

void CaptionWindowPlace::save() {
    settled_.stop();
    if (window_.visibility() == QWindow::Windowed)
        store_.set(key(), textOf(window_.geometry()).toStdString());
}

} // namespace tessarune
