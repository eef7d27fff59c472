#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The recorded sessions. Both only read. Each gives the status to end with. Main queue.

Task<int> listRecordings(Program& program, const TerminalOptions& options);
Task<int> showRecording(Program& program, const TerminalOptions& options, std::string id);

} // namespace tessarune
