#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The commands for the settings, which both front ends share. Each returns the exit status. Main
// queue.

Task<int> showSettings(Program& program, const TerminalOptions& options);
/// Assigns all values or, if one is invalid, none.
Task<int> changeSettings(Program& program, SetCommand command);

} // namespace tessarune
