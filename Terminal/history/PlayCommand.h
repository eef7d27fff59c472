#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Plays a recording to its end or until it is interrupted, and shows what is heard; at a terminal,
/// keys control it. Returns the exit status. Main queue.
Task<int> playRecording(Program& program, const TerminalOptions& options, PlayCommand command);

} // namespace tessarune
