#pragma once

#include "Terminal/HistoryOptions.h"
#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Lists, shows, verifies, packs or deletes diagnostics runs, and returns the exit status. Main
/// queue.
Task<int> runDiagnosticsCommand(Program& program, const TerminalOptions& options,
                                DiagnosticsCommand command);

} // namespace tessarune
