#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The commands that print and change the settings, which are also those of the desktop program.
// Each prints failures and returns the exit status. Main queue; `program` and `options` must
// outlive the task.

/// Prints all settings by group, or as JSON, and why the settings file cannot be read if so.
Task<int> showSettings(Program& program, const TerminalOptions& options);
/// Assigns all values; none if one is invalid (`usage`). Moves an unreadable settings file aside
/// first and begins a new one. `cannotWrite` if the file cannot be saved.
Task<int> changeSettings(Program& program, SetCommand command);

} // namespace tessarune
