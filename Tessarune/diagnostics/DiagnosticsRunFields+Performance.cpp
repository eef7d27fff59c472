#include "Tessarune/diagnostics/DiagnosticsRunFields.h"

namespace tessarune::DiagnosticsRunFields {

namespace {

constexpr Field sampleTime{"t", "seconds since the first sample"};
constexpr Field sampledLoad{"processCPUPercent, mainThreadLagMS",
                            "as in `perf.csv`, of the same moment"};

} // namespace

Table performance() {
    return {
        {"perfSamples",
         {sampleTime,
          {"cpuPercent", "processor time of the program since the last sample, in percent of one "
                         "core"},
          {"footprintMB", "memory of the program alone, resident or swapped out, in 2^20 bytes"},
          {"residentMB", "the part of its memory that is resident now"},
          {"thermalState", "\"nominal\", \"fair\", \"serious\", \"critical\", or \"unknown\" if "
                           "the computer does not report it"},
          {"activeProcessorCount", "processors that the program may use within the limits of its "
                                   "control group"},
          {"lowPowerMode", "whether the computer is in a power-saving mode; false if it has none"},
          {"mainThreadLagMS", "the maximum delay of the main thread since the last sample"}}},
        {"perfThreads",
         {sampleTime,
          sampledLoad,
          {"topThreads",
           "the eight threads with the most processor time: `rankHint` (their order), `threadID`, "
           "`isMainThread`, `cpuPercent` since the last sample, `userSeconds` and `systemSeconds` "
           "since the thread began, `runState`, `flags` (as the kernel has them), `dispatchQAddr` "
           "(always \"0x0\": threads here belong to no queue)",
           anything}}},
        {"perfPipeline",
         {sampleTime,
          sampledLoad,
          {"metrics, delta",
           "the counters of the pipeline, and their increase since the last sample", anything}}},
        {"idleMemorySentinel",
         {schema,
          {"kind", "\"idleMemorySentinel\""},
          {"phase", "\"start\", \"sample\", \"finish\" or \"stop\""},
          {"reason", "what caused the record"},
          {"runDirectory", "the run"},
          {"elapsedSeconds", "seconds since the session's end"},
          {"sampleIntervalSeconds, maxRuntimeSeconds",
           "the interval between two samples, and the longest duration of the watch"},
          {"memory", "`footprintMB` and `residentMB`, as in `perf.csv`", anything},
          {"cpuPercent", "processor time since the last record, in percent of one core"},
          {"appState", "what the program is doing", anything}}},
        {"idleMemoryAlarms",
         {schema,
          {"phase", "\"alarm\""},
          {"kind, reason, runDirectory, elapsedSeconds, sampleIntervalSeconds, maxRuntimeSeconds, "
           "cpuPercent",
           "as in the samples"},
          {"memory, appState", "as in the samples", anything},
          {"alarmKind",
           "once in a run: \"idleCpuHigh\" (12 % of one core, a minute or more after the session), "
           "\"absolute\" (2048 MB), \"baselineMultiple\" (three times the memory at the session's "
           "end, and at least 512 MB), \"growthSpike\" (512 MB more than at the last sample); for "
           "each further gigabyte: \"gigabyteMilestone\""},
          {"alarmDetail", "the limit that was exceeded", anything},
          {"windows",
           "the program's windows: `title`, `isVisible`, `isKeyWindow`, `isMainWindow`, "
           "`isMiniaturized`, `level`, `frame`",
           anything},
          {"host", "the computer", "host"},
          {"footprintMB, residentMB", "the memory now"},
          {"baselineMB", "`footprintMB` at the end of the session"},
          {"runID", "the run's name"},
          {"lightweight", "false: alarms without a run are only in the runtime log"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
