#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The commands that print and change the settings. The desktop program uses the same settings.
// Each command prints failures and returns the exit status. Main queue; `program` and `options`
// must outlive the task.

/// Prints all settings by group, or as JSON. If the settings file cannot be read, also prints why,
/// and returns `ioError`.
Task<int> showSettings(Program& program, const TerminalOptions& options);
/// Assigns all values; if one is invalid, changes nothing and returns `usage`. Before it assigns
/// them, moves an unreadable settings file aside and begins a new one. Returns `cannotWrite` if the
/// file cannot be saved.
Task<int> changeSettings(Program& program, SetCommand command);

} // namespace tessarune
