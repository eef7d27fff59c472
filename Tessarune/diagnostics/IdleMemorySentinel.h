#pragma once

#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tessarune {

/// Watches memory and processor after a session, when the program should be idle, and raises an
/// alarm on a leak or on load. With the folder of a run, it writes samples and alarms to that
/// folder. Without a folder, it writes samples to the runtime log, where its records are marked as
/// "lightweight". The runtime log gets all alarms.
///
/// Main queue; reading the figures of the process takes less than a millisecond every 15 seconds.
/// All references outlive it.
class IdleMemorySentinel {
  public:
    static constexpr double sampleIntervalSeconds = 15;
    static constexpr double maxRuntimeSeconds = 21600; ///< six hours
    static constexpr std::int64_t maxAlarmThresholdGB = 256;
    static constexpr double absoluteAlarmThresholdMB = 2048;
    static constexpr double baselineAlarmMultiple = 3;
    static constexpr double baselineAlarmFloorMB = 512;
    static constexpr double growthSpikeMB = 512;
    static constexpr double idleCpuAlarmPercent = 12;
    static constexpr double idleCpuAlarmGraceSeconds = 60;

    struct Window {
        std::string title;
        bool isVisible = false;
        bool isKeyWindow = false;
        bool isMainWindow = false;
        bool isMiniaturized = false;
        std::int64_t level = 0;
        double width = 0;
        double height = 0;
    };
    using Windows = std::function<std::vector<Window>()>;
    /// Describes what the program is doing, for each record.
    using SnapshotProvider = std::function<LogFields()>;

    struct Environment {
        Host& host;
        FileSystem& files;
        TessaruneFileLogger& logger;
        ProcessFigures& figures;
        Windows windows; ///< empty if the program has no windows
    };

    explicit IdleMemorySentinel(Environment environment);
    ~IdleMemorySentinel();
    IdleMemorySentinel(const IdleMemorySentinel&) = delete;

    /// Watches until `stop`, six hours at most. Ends a former watch.
    void start(std::optional<std::filesystem::path> runDirectory, const std::string& reason,
               SnapshotProvider snapshotProvider);
    void stop(const std::string& reason);

  private:
    struct Sample {
        std::string phase;
        std::string reason;
        double elapsedSeconds = 0;
        ProcessFigures::Memory memory;
        double cpuPercent = 0;
        LogFields appState;
    };

    void arm();
    void wake();
    Sample takeSample(const char* phase, const std::string& reason);
    void write(const Sample& sample);
    void emitAlarmsIfNeeded(const Sample& sample);
    void emitAlarm(const char* kind, const LogFields& detail, const Sample& sample);
    nlohmann::json baseRecord(const Sample& sample) const;
    std::string runID() const;
    void end();

    const Environment environment_;
    const std::shared_ptr<SerialQueue> closingQueue_;
    DelayedCall timer_;
    bool isRunning_ = false;
    std::unique_ptr<DiagnosticsNDJSONWriter> sampleWriter_;
    std::unique_ptr<DiagnosticsNDJSONWriter> alarmWriter_;
    std::optional<std::filesystem::path> runDirectory_;
    double startedAt_ = 0;
    std::int64_t emittedThresholdGB_ = 0; ///< the last milestone that was reported
    SnapshotProvider snapshotProvider_;
    std::optional<double> sessionBaselineMB_; ///< the footprint at the start of the watch
    std::optional<double> lastSampleFootprintMB_;
    double lastCpuSeconds_ = 0;
    double lastSampledAt_ = 0;
    std::set<std::string> firedAlarmKinds_;
};

} // namespace tessarune
