#pragma once

#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/diagnostics/LogFields.h"

#include <functional>

/// The services that every front end starts before it shows anything.
namespace tessarune::TessaruneStartupServices {

struct Environment {
    TessaruneFileLogger& logger;
    LogFields bootstrapFields; ///< the program and the computer, for the log
    /// Null unless this program holds the data folder.
    RecordingRepair* repair;
    /// Keeps the diagnostics runs within their budget; returns at once. Empty if `repair` is null.
    std::function<void()> pruneDiagnostics = {};
    /// Prepares the chosen recogniser before the first session; may be empty.
    std::function<void()> preheatSelectedOption = {};
};

/// Starts the services in this order: the runtime log, the repairs of the data folder, the pruning
/// of diagnostics runs, the preparation of the recogniser. Main queue; returns the repairs to
/// report to the user.
RecordingRepair::Report prepare(const Environment& environment);

} // namespace tessarune::TessaruneStartupServices
