#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// A run of captions from beginning to end: opens the source, prints the captions, ends with the
/// file or with Ctrl-C. Returns the program's exit status; failures are printed on standard error.
/// Main queue; program and options outlive it.
Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command);

} // namespace tessarune
