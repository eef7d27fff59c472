#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Prints the available sources, each as it is written after --source. Main queue.
Task<int> listSources(Program& program, const TerminalOptions& options);

} // namespace tessarune
