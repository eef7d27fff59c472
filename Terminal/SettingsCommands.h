#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The settings, which both front ends share. Each gives the status to end with. Main queue.

Task<int> showSettings(Program& program, const TerminalOptions& options);
/// All of them or, if one makes no sense, none.
Task<int> changeSettings(Program& program, SetCommand command);

} // namespace tessarune
