#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Prints what can be listened to, each as it is written after --source. Main queue.
Task<int> listSources(Program& program, const TerminalOptions& options);

} // namespace tessarune
