#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The commands for speech models: list, install, remove. Each returns the exit status. Main queue.

Task<int> listModels(Program& program, const TerminalOptions& options);
Task<int> installModel(Program& program, const TerminalOptions& options, std::string name);
Task<int> removeModel(Program& program, std::string name);

} // namespace tessarune
