#include "Tessarune/ui/controls/DesktopLook.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

namespace tessarune {

namespace {

constexpr double smallestBody = 12;
constexpr double largestBody = 40;

} // namespace

DesktopLook::DesktopLook() {
    QGuiApplication::instance()->installEventFilter(this);
}

bool DesktopLook::isDark() const {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightnessF() <
           palette.color(QPalette::WindowText).lightnessF();
}

double DesktopLook::bodyPixels() const {
    const double pixels = QFontInfo(QGuiApplication::font()).pixelSize();
    return std::clamp(pixels, smallestBody, largestBody);
}

bool DesktopLook::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange ||
        event->type() == QEvent::ApplicationFontChange)
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

} // namespace tessarune
