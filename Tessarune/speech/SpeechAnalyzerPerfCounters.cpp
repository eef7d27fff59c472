#include "Tessarune/speech/SpeechAnalyzerPerfCounters.h"

namespace tessarune {

PerfStats SpeechAnalyzerPerfCounters::stats() const {
    return {
        {"fedAudioSeconds", perfFedAudioSeconds},
        {"convertedAudioSeconds", perfConvertedAudioSeconds},
        {"conversionBusySeconds", perfConversionBusySeconds},
        {"rawPartialResults", perfRawPartialResults},
        {"appleSummaryResults", perfAppleSummaryResults},
        {"appleSummaryBusySeconds", perfAppleSummaryBusySeconds},
        {"appleFullRawResults", perfAppleFullRawResults},
        {"appleFullRawBusySeconds", perfAppleFullRawBusySeconds},
        {"partialEvents", perfPartialEvents},
        {"coalescedPartialResults", perfCoalescedPartialResults},
        {"finalEvents", perfFinalEvents},
        {"finalCharacters", perfFinalCharacters},
        {"appleReconcileUseFinal", perfAppleReconcileUseFinal},
        {"appleReconcileUseLastPartial", perfAppleReconcileUseLastPartial},
        {"appleReconcileDropSuppressed", perfAppleReconcileDropSuppressed},
        {"timingBusySeconds", perfTimingBusySeconds},
        {"timingRuns", perfTimingRuns},
        {"timedRuns", perfTimedRuns},
        {"timedWords", perfTimedWords},
        {"cancelRequests", perfCancelRequests},
        {"cancelDone", perfCancelDone},
        {"canceledAudioSeconds", perfCanceledAudioSeconds},
        {"drainTimeouts", perfDrainTimeouts},
        {"analyzerInputSourceBuffers", perfAnalyzerInputSourceBuffers},
        {"analyzerInputBatches", perfAnalyzerInputBatches},
        {"analyzerInputBatchFrames", perfAnalyzerInputBatchFrames},
        {"analyzerInputFlushes", perfAnalyzerInputFlushes},
        {"analyzerInputYieldBusySeconds", perfAnalyzerInputYieldBusySeconds},
    };
}

} // namespace tessarune
