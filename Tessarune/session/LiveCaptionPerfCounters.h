#pragma once

#include "Tessarune/speech/AudioTranscriber.h"

namespace tessarune {

/// The counters of a session, counted from its start. Main queue.
struct LiveCaptionPerfCounters {
    double asrEventCount = 0;
    double asrPartialCount = 0;
    double asrFinalCount = 0;
    double asrMainBusySeconds = 0;
    double asrMainMaxMS = 0;
    double asrDiagnosticsBusySeconds = 0;
    double asrDiagnosticsMaxMS = 0;
    double coreIngestBusySeconds = 0;
    double coreIngestMaxMS = 0;
    double coreChangeNotifications = 0;
    double coreChangeObjectWillChangeSuppressed = 0;
    double toolbarTextFlagUpdates = 0;
    double liveHistoryTextBuilds = 0;
    double liveHistoryTextBuildSeconds = 0;
    double liveHistoryTextBuildMaxMS = 0;
    double liveHistoryTextCharacters = 0;
    double audioInactivityAutoStops = 0;

    /// The counters, keyed by the names of the fields.
    PerfStats stats() const;
};

} // namespace tessarune
