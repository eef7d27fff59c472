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
          {"kind, phase, reason",
           "\"idleMemorySentinel\"; \"start\", \"sample\", \"finish\" or \"stop\"; why"},
          {"runDirectory, elapsedSeconds, sampleIntervalSeconds, maxRuntimeSeconds",
           "the run, the seconds since the session's end, the interval and the duration of the "
           "watch"},
          {"memory", "`footprintMB`, `residentMB`, as in `perf.csv`", anything},
          {"cpuPercent", "since the last record, in percent of one core"},
          {"appState", "what the program is doing", anything}}},
        {"idleMemoryAlarms",
         {schema,
          {"kind, phase, reason", "as in the samples; the phase is \"alarm\""},
          {"runDirectory, elapsedSeconds, sampleIntervalSeconds, maxRuntimeSeconds",
           "as in the samples"},
          {"memory", "`footprintMB`, `residentMB`", anything},
          {"cpuPercent", "as in the samples"},
          {"appState", "what the program is doing", anything},
          {"alarmKind",
           "\"idleCpuHigh\" (12 % a minute or more after the end), \"absolute\" (2048 MB), "
           "\"baselineMultiple\" (three times the memory at the end, 512 MB at least), "
           "\"growthSpike\" (512 MB more than at the last sample): each once; "
           "\"gigabyteMilestone\": once for each gigabyte"},
          {"alarmDetail", "the limit that was exceeded", anything},
          {"windows",
           "the program's: `title`, `isVisible`, `isKeyWindow`, `isMainWindow`, "
           "`isMiniaturized`, `level`, `frame`",
           anything},
          {"host", "the computer", "host"},
          {"footprintMB, residentMB, baselineMB", "now, and at the end of the session"},
          {"runID, lightweight", "the run's name; whether there is none"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
