#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <vector>

namespace tessarune {

/// Takes files into the history, one after the other, each with its transcript and, where
/// translation is on, its translation. Ctrl-C ends it, and the file at hand leaves nothing behind.
/// Gives the status to end with: the first that is not good. Main queue.
Task<int> importFiles(Program& program, const TerminalOptions& options,
                      std::vector<std::filesystem::path> files);

} // namespace tessarune
