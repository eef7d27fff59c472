#pragma once

#include "Tessarune/speech/AudioTranscriber.h"

namespace tessarune {

/// Counters of an engine session since its start; times in seconds.
struct SpeechAnalyzerPerfCounters {
    double perfFedAudioSeconds = 0;
    double perfConvertedAudioSeconds = 0;
    double perfConversionBusySeconds = 0;
    double perfRawPartialResults = 0;
    double perfAppleSummaryResults = 0;
    double perfAppleSummaryBusySeconds = 0;
    double perfAppleFullRawResults = 0;
    double perfAppleFullRawBusySeconds = 0;
    double perfPartialEvents = 0;
    double perfCoalescedPartialResults = 0;
    double perfFinalEvents = 0;
    double perfFinalCharacters = 0;
    double perfAppleReconcileUseFinal = 0;
    double perfAppleReconcileUseLastPartial = 0;
    double perfAppleReconcileDropSuppressed = 0;
    double perfTimingBusySeconds = 0;
    double perfTimingRuns = 0;
    double perfTimedRuns = 0;
    double perfTimedWords = 0;
    double perfCancelRequests = 0;
    double perfCancelDone = 0;
    double perfCanceledAudioSeconds = 0;
    double perfDrainTimeouts = 0;
    double perfAnalyzerInputSourceBuffers = 0;
    double perfAnalyzerInputBatches = 0;
    double perfAnalyzerInputBatchFrames = 0;
    double perfAnalyzerInputFlushes = 0;
    double perfAnalyzerInputYieldBusySeconds = 0;

    /// The counters by name, without the prefix "perf": "fedAudioSeconds".
    PerfStats stats() const;
};

} // namespace tessarune
