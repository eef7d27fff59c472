#pragma once

#include "Tessarune/shell/AppSettings.h"

#include <QKeySequence>
#include <cstdint>
#include <optional>

namespace tessarune {

/// The keys of a stored shortcut: Command is Ctrl here, Option is Alt, and Control the key with the
/// system's sign. Empty for a shortcut that is switched off and for a code of no key.
QKeySequence keysOf(const ShortcutSetting& shortcut);

/// What is stored as the key code of a shortcut that is switched off.
inline constexpr std::int64_t noKeyCode = 0xFFFF;

/// A key with its modifiers as the settings store them.
struct StoredKeys {
    std::int64_t keyCode = noKeyCode;
    std::int64_t modifiers = 0;
};
/// Nothing for keys that have no code.
std::optional<StoredKeys> storedKeys(int key, Qt::KeyboardModifiers modifiers);

} // namespace tessarune
