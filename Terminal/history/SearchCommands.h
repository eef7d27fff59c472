#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// The recordings in which something was said, in which its translation has it or whose note does,
/// the newest first, with the words around it. Gives the status to end with. Main queue.
Task<int> searchRecordings(Program& program, const TerminalOptions& options, std::string text);

} // namespace tessarune
