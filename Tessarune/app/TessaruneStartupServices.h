#pragma once

#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/diagnostics/LogFields.h"

#include <functional>

/// What every front end starts before it shows anything.
namespace tessarune::TessaruneStartupServices {

struct Environment {
    TessaruneFileLogger& logger;
    LogFields bootstrapFields; ///< what the log says of the program and the computer
    /// Null where the data folder is another program's, or nobody's.
    RecordingRepair* repair;
    /// Keeps the diagnostics runs within their budget; returns at once. Absent as `repair` is.
    std::function<void()> pruneDiagnostics = {};
    /// Gets the chosen recogniser ready ahead of the first session; may be absent.
    std::function<void()> preheatSelectedOption = {};
};

/// In this order: the runtime log, the repairs of the data folder, the diagnostics runs, the
/// recogniser. Main queue; gives what the user is to hear of the repairs.
RecordingRepair::Report prepare(const Environment& environment);

} // namespace tessarune::TessaruneStartupServices
