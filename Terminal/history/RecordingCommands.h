#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// Commands that read recorded sessions. Each returns the exit status. Main queue.

Task<int> listRecordings(Program& program, const TerminalOptions& options);
Task<int> showRecording(Program& program, const TerminalOptions& options, std::string id);

} // namespace tessarune
