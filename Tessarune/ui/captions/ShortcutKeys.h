#pragma once

#include "Tessarune/shell/AppSettings.h"

#include <QKeySequence>
#include <cstdint>
#include <optional>

namespace tessarune {

/// Returns the keys of a shortcut. Shortcuts are stored with the key codes and modifiers of another
/// platform: Command becomes Ctrl, Option becomes Alt, and Control becomes Meta (the Super key).
/// The result is empty for a shortcut that is switched off and for an unknown key code.
QKeySequence keysOf(const ShortcutSetting& shortcut);

/// Returns the digit if a key of the row of digits is pressed with Shift, otherwise `key`. With
/// Shift, the key of a digit arrives as the sign above the digit, which depends on the keyboard's
/// layout. `scanCode` is that of X11.
int keyWithoutShift(int key, Qt::KeyboardModifiers modifiers, quint32 scanCode);

/// The stored key code of a shortcut that is switched off.
inline constexpr std::int64_t noKeyCode = 0xFFFF;

/// A key with its modifiers as the settings store them.
struct StoredKeys {
    std::int64_t keyCode = noKeyCode;
    std::int64_t modifiers = 0;
};
/// Returns `nullopt` for a key without a code.
std::optional<StoredKeys> storedKeys(int key, Qt::KeyboardModifiers modifiers);

} // namespace tessarune
