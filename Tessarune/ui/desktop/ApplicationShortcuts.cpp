#include "Tessarune/ui/desktop/ApplicationShortcuts.h"

#include "Tessarune/ui/captions/ShortcutKeys.h"

#include <QGuiApplication>
#include <QKeySequence>
#include <QWindow>

namespace tessarune {

namespace {

/// Whether the focused item needs the keys itself: it records a shortcut, or the keys copy its
/// selected text.
bool keepsKeys(const QObject* focus, const QKeyEvent& keys) {
    if (!focus)
        return false;
    const bool copiesText =
        keys.matches(QKeySequence::Copy) && !focus->property("selectedText").toString().isEmpty();
    return copiesText || focus->property("recordsKeys").toBool();
}

} // namespace

ApplicationShortcuts::ApplicationShortcuts(const CaptionCommandsModel& commands)
    : commands_(commands) {
    qGuiApp->installEventFilter(this);
}

int ApplicationShortcuts::commandOf(const QKeyEvent& keys) const {
    if ((keys.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier)
        return -1;
    const int key = keyWithoutShift(keys.key(), keys.modifiers(), keys.nativeScanCode());
    const QString pressed = QKeySequence(QKeyCombination(keys.modifiers(), Qt::Key(key)))
                                .toString(QKeySequence::PortableText);
    for (int row = 0; row < commands_.rowCount(); ++row) {
        const QModelIndex index = commands_.index(row);
        if (commands_.data(index, CaptionCommandsModel::KeysRole) == pressed &&
            commands_.data(index, CaptionCommandsModel::EnabledRole).toBool())
            return row;
    }
    return -1;
}

bool ApplicationShortcuts::eventFilter(QObject* watched, QEvent* event) {
    const bool isOverride = event->type() == QEvent::ShortcutOverride;
    if (!isOverride && event->type() != QEvent::KeyPress)
        return false;
    if (!qobject_cast<QWindow*>(watched))
        return false;
    const auto* const keys = static_cast<QKeyEvent*>(event);
    const int command = commandOf(*keys);
    if (command < 0 || keepsKeys(QGuiApplication::focusObject(), *keys))
        return false;
    if (isOverride)
        event->accept(); // the keys then arrive as a key press, and no other shortcut gets them
    else if (!keys->isAutoRepeat())
        commands_.press(command);
    return true;
}

} // namespace tessarune
