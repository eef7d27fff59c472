#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Captions from beginning to end: finds the source, prints what is said, ends with the file or
/// with Ctrl-C. Gives the status to end the program with; what went wrong is printed on standard
/// error. Main queue; program and options outlive it.
Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command);

} // namespace tessarune
