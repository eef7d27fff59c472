#include "Tessarune/session/LiveCaptionPerfCounters.h"

namespace tessarune {

PerfStats LiveCaptionPerfCounters::stats() const {
    return {{"asrEventCount", asrEventCount},
            {"asrPartialCount", asrPartialCount},
            {"asrFinalCount", asrFinalCount},
            {"asrMainBusySeconds", asrMainBusySeconds},
            {"asrMainMaxMS", asrMainMaxMS},
            {"asrDiagnosticsBusySeconds", asrDiagnosticsBusySeconds},
            {"asrDiagnosticsMaxMS", asrDiagnosticsMaxMS},
            {"coreIngestBusySeconds", coreIngestBusySeconds},
            {"coreIngestMaxMS", coreIngestMaxMS},
            {"coreChangeNotifications", coreChangeNotifications},
            {"coreChangeObjectWillChangeSuppressed", coreChangeObjectWillChangeSuppressed},
            {"toolbarTextFlagUpdates", toolbarTextFlagUpdates},
            {"liveHistoryTextBuilds", liveHistoryTextBuilds},
            {"liveHistoryTextBuildSeconds", liveHistoryTextBuildSeconds},
            {"liveHistoryTextBuildMaxMS", liveHistoryTextBuildMaxMS},
            {"liveHistoryTextCharacters", liveHistoryTextCharacters},
            {"audioInactivityAutoStops", audioInactivityAutoStops}};
}

} // namespace tessarune
