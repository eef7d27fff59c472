#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Prints the words of a recording by lemma, the most frequent first, with their meanings and the
/// user's marks. Changes nothing. Returns the exit status. Main queue.
Task<int> countWords(Program& program, const TerminalOptions& options, std::string id);

} // namespace tessarune
