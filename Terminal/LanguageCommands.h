#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// The languages that captions are translated into: what there is, getting one, removing one, trying
// one. Each gives the status to end with. Main queue.

Task<int> listLanguages(Program& program, const TerminalOptions& options);
Task<int> downloadLanguage(Program& program, const TerminalOptions& options, std::string id);
Task<int> removeLanguage(Program& program, std::string id);
/// Downloads the language first if it is missing, and then translates a sample.
Task<int> testTranslation(Program& program, const TerminalOptions& options, std::string target);

} // namespace tessarune
