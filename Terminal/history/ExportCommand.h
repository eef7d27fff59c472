#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Writes a recording to a file or to standard output. Replaces a file only with `--yes`, or after
/// the user confirms. Returns the exit status. Main queue.
Task<int> exportRecording(Program& program, const TerminalOptions& options,
                          ExportRecordingCommand command);

} // namespace tessarune
