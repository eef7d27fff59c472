#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Does what was asked of the recorded sessions, and gives the status to end with. Main queue.
Task<int> runHistoryCommand(Program& program, const TerminalOptions& options,
                            const HistoryCommand& command);

} // namespace tessarune
