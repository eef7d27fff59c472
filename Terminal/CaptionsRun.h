#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Runs captions from beginning to end: opens the source and prints the captions until the session
/// ends, usually because the file ends or the user presses Ctrl-C. Then refines the recording if a
/// user can see and cancel the refinement. Returns the program's exit status; prints failures on
/// standard error. Main queue; `program` and `options` must outlive the task.
Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command);

} // namespace tessarune
