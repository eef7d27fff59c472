#include "Tessarune/ui/desktop/KeyRepeats.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

namespace tessarune {

KeyRepeats::KeyRepeats() {
    qGuiApp->installEventFilter(this);
}

bool KeyRepeats::eventFilter(QObject* watched, QEvent* event) {
    const bool isOverride = event->type() == QEvent::ShortcutOverride;
    const bool isRelease = event->type() == QEvent::KeyRelease;
    if ((!isOverride && !isRelease && event->type() != QEvent::KeyPress) ||
        !qobject_cast<QWindow*>(watched))
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (isRelease) {
        releaseTime_ = key.timestamp();
        releasedScanCode_ = key.nativeScanCode();
        return false;
    }
    if (key.isAutoRepeat() || key.timestamp() == 0 || key.timestamp() != releaseTime_ ||
        key.nativeScanCode() != releasedScanCode_)
        return false;
    if (isOverride) {
        event->accept(); // keeps the key from the shortcuts; the press follows
        return true;
    }
    QKeyEvent repetition(event->type(), key.key(), key.modifiers(), key.nativeScanCode(),
                         key.nativeVirtualKey(), key.nativeModifiers(), key.text(), true,
                         static_cast<quint16>(key.count()), key.device());
    repetition.setTimestamp(key.timestamp());
    QCoreApplication::sendEvent(watched, &repetition);
    event->setAccepted(repetition.isAccepted());
    return true;
}

} // namespace tessarune
