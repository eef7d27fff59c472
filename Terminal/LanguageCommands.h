#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The commands for target languages: list, download, remove, test. Each returns the exit status.
// Main queue.

Task<int> listLanguages(Program& program, const TerminalOptions& options);
Task<int> downloadLanguage(Program& program, const TerminalOptions& options, std::string id);
Task<int> removeLanguage(Program& program, std::string id);
/// Downloads a missing or damaged language first, then translates a sample.
Task<int> testTranslation(Program& program, const TerminalOptions& options, std::string target);

} // namespace tessarune
