#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Lists the recordings whose transcript, translation or note matches, the newest first, with the
/// words around the match. Returns the exit status. Main queue.
Task<int> searchRecordings(Program& program, const TerminalOptions& options, std::string text);

} // namespace tessarune
