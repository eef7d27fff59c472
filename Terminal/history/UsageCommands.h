#pragma once

#include "Terminal/Program.h"
#include "Tessarune/history/UsageStatistics.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Prints listening time, sessions and words by period, the oldest first. Changes nothing. Returns
/// the exit status. Main queue.
Task<int> showUsage(Program& program, const TerminalOptions& options, UsagePeriodKind by);

} // namespace tessarune
