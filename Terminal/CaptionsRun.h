#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Runs captions from beginning to end: opens the source and prints the captions until the file
/// ends or the user presses Ctrl-C. Returns the program's exit status; failures are printed on
/// standard error. Main queue; `program` and `options` must outlive it.
Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command);

} // namespace tessarune
