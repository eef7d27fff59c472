#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The speech models: what there is, getting one, removing one. Each gives the status to end with.
// Main queue.

Task<int> listModels(Program& program, const TerminalOptions& options);
Task<int> installModel(Program& program, const TerminalOptions& options, std::string name);
Task<int> removeModel(Program& program, std::string name);

} // namespace tessarune
