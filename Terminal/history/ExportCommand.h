#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Writes a recording to a file or to standard output. Replaces a file only if told to, or if
/// whoever sits there says so. Gives the status to end with. Main queue.
Task<int> exportRecording(Program& program, const TerminalOptions& options,
                          ExportRecordingCommand command);

} // namespace tessarune
