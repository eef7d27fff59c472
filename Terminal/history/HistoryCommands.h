#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Runs a command for recorded sessions, and returns the exit status. Main queue.
Task<int> runHistoryCommand(Program& program, const TerminalOptions& options,
                            const HistoryCommand& command);

} // namespace tessarune
