#include "Tessarune/ui/controls/DesktopLook.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

namespace tessarune {

namespace {

/// Stored as a property of the application object, so that all objects of this class share it.
constexpr const char* motionProperty = "reducesMotion";
// In device-independent pixels.
constexpr double smallestBody = 12;
constexpr double largestBody = 40;
/// The desktops' default fonts have 12 to 14.7 pixels. A larger font is the user's choice.
constexpr double largestDefaultBody = 15;

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

double DesktopLook::textScale() const {
    return std::max(1.0, bodyPixels() / largestDefaultBody);
}

bool DesktopLook::reducesMotion() const {
    return QGuiApplication::instance()->property(motionProperty).toBool();
}

void DesktopLook::setReducesMotion(bool reduces) {
    QGuiApplication::instance()->setProperty(motionProperty, reduces);
}

bool DesktopLook::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange ||
        event->type() == QEvent::ApplicationFontChange ||
        (event->type() == QEvent::DynamicPropertyChange && watched == QGuiApplication::instance()))
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

} // namespace tessarune
