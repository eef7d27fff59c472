#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// The words of a recording by lemma, the most frequent first, with what they mean and how the user
/// marked them. Only reads. Gives the status to end with. Main queue.
Task<int> countWords(Program& program, const TerminalOptions& options, std::string id);

} // namespace tessarune
