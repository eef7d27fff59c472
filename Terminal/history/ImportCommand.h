#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <vector>

namespace tessarune {

/// Imports files, one after the other, each with its transcript and, if translation is on, its
/// translation. After Ctrl-C the command ends, and nothing remains of the current file. Returns the
/// exit status of the interruption or of the first failure. Main queue.
Task<int> importFiles(Program& program, const TerminalOptions& options,
                      std::vector<std::filesystem::path> files);

} // namespace tessarune
