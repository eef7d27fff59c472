#pragma once

#include "Tessarune/shell/AppSettings.h"

#include <QKeySequence>

namespace tessarune {

/// The keys of a stored shortcut: Command is Ctrl here, Option is Alt, and Control the key with the
/// system's sign. Empty for a shortcut that is switched off and for a code of no key.
QKeySequence keysOf(const ShortcutSetting& shortcut);

} // namespace tessarune
