#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Plays a recording, to its end or until the user ends the playback, and shows what is heard. At a
/// terminal, keys control the playback. Returns the exit status. Main queue.
Task<int> playRecording(Program& program, const TerminalOptions& options, PlayCommand command);

} // namespace tessarune
