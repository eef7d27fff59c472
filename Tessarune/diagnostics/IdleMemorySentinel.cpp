#include "Tessarune/diagnostics/IdleMemorySentinel.h"

#include "TessaruneCore/text/JSON.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

constexpr double mbPerGB = 1024;
constexpr double hundredPercent = 100;
constexpr const char* lightweightRun = "(lightweight)";

} // namespace

IdleMemorySentinel::IdleMemorySentinel(Environment environment)
    : environment_(std::move(environment)),
      closingQueue_(
          environment_.host.serialQueue("Tessarune.IdleMemorySentinel", QueuePriority::utility)) {}

IdleMemorySentinel::~IdleMemorySentinel() {
    timer_.cancel();
}

std::string IdleMemorySentinel::runID() const {
    return runDirectory_ ? runDirectory_->filename().string() : lightweightRun;
}

void IdleMemorySentinel::start(std::optional<std::filesystem::path> runDirectory,
                               const std::string& reason, SnapshotProvider snapshotProvider) {
    stop("restart");
    Host& host = environment_.host;
    runDirectory_ = std::move(runDirectory);
    snapshotProvider_ = std::move(snapshotProvider);
    if (runDirectory_) {
        const auto events = *runDirectory_ / "events";
        sampleWriter_ = std::make_unique<DiagnosticsNDJSONWriter>(
            host, environment_.files, events / "idle_memory_sentinel.ndjson",
            "Tessarune.IdleMemorySentinel.samples");
        alarmWriter_ = std::make_unique<DiagnosticsNDJSONWriter>(
            host, environment_.files, events / "idle_memory_alarm.ndjson",
            "Tessarune.IdleMemorySentinel.alarms");
    }
    isRunning_ = true;
    startedAt_ = lastSampledAt_ = host.now();
    lastCpuSeconds_ = environment_.figures.cpuSeconds();
    const Sample first = takeSample("start", reason);
    sessionBaselineMB_ = lastSampleFootprintMB_ = first.memory.footprintMB;
    LogFields fields{{"runID", runID()},
                     {"lightweight", !runDirectory_},
                     {"sampleIntervalSeconds", sampleIntervalSeconds},
                     {"idleCpuAlarmGraceSeconds", idleCpuAlarmGraceSeconds},
                     {"maxRuntimeSeconds", maxRuntimeSeconds},
                     {"reason", reason}};
    if (runDirectory_)
        fields.add("runDirectory", runDirectory_->string());
    environment_.logger.event("idleMemorySentinel.start", fields);
    write(first);
    arm();
}

void IdleMemorySentinel::arm() {
    timer_ = environment_.host.after(sampleIntervalSeconds, [this] { wake(); });
}

void IdleMemorySentinel::wake() {
    if (environment_.host.now() - startedAt_ >= maxRuntimeSeconds) {
        write(takeSample("finish", "maxRuntime"));
        end();
        return;
    }
    const Sample sample = takeSample("sample", "timer");
    write(sample);
    emitAlarmsIfNeeded(sample);
    lastSampleFootprintMB_ = sample.memory.footprintMB;
    arm();
}

IdleMemorySentinel::Sample IdleMemorySentinel::takeSample(const char* phase,
                                                          const std::string& reason) {
    const double now = environment_.host.now();
    const double cpu = environment_.figures.cpuSeconds();
    Sample sample{phase,
                  reason,
                  now - startedAt_,
                  environment_.figures.memory(),
                  0,
                  snapshotProvider_ ? snapshotProvider_() : LogFields()};
    const double elapsed = now - std::exchange(lastSampledAt_, now);
    const double busy = cpu - std::exchange(lastCpuSeconds_, cpu);
    if (elapsed > 0)
        sample.cpuPercent = busy / elapsed * hundredPercent;
    return sample;
}

nlohmann::json IdleMemorySentinel::baseRecord(const Sample& sample) const {
    JSON::Value record{
        {"schemaVersion", 1},
        {"kind", "idleMemorySentinel"},
        {"phase", sample.phase},
        {"reason", sample.reason},
        {"elapsedSeconds", sample.elapsedSeconds},
        {"sampleIntervalSeconds", sampleIntervalSeconds},
        {"maxRuntimeSeconds", maxRuntimeSeconds},
        {"memory",
         {{"footprintMB", sample.memory.footprintMB}, {"residentMB", sample.memory.residentMB}}},
        {"cpuPercent", sample.cpuPercent},
        {"appState", DiagnosticsNDJSONWriter::object(sample.appState)}};
    if (runDirectory_)
        record["runDirectory"] = runDirectory_->string();
    return record;
}

void IdleMemorySentinel::write(const Sample& sample) {
    if (sampleWriter_) {
        sampleWriter_->append(baseRecord(sample));
        return;
    }
    environment_.logger.event("idleMemorySentinel.sample",
                              {{"phase", sample.phase},
                               {"footprintMB", sample.memory.footprintMB},
                               {"residentMB", sample.memory.residentMB},
                               {"baselineMB", sessionBaselineMB_.value_or(0)},
                               {"elapsedSeconds", sample.elapsedSeconds},
                               {"cpuPercent", sample.cpuPercent}});
}

void IdleMemorySentinel::emitAlarmsIfNeeded(const Sample& sample) {
    const double footprint = sample.memory.footprintMB;
    const auto once = [&](bool applies, const char* kind, const LogFields& detail) {
        if (applies && firedAlarmKinds_.insert(kind).second)
            emitAlarm(kind, detail, sample);
    };
    once(sample.elapsedSeconds >= idleCpuAlarmGraceSeconds &&
             sample.cpuPercent >= idleCpuAlarmPercent,
         "idleCpuHigh",
         {{"cpuPercent", sample.cpuPercent},
          {"thresholdPercent", idleCpuAlarmPercent},
          {"elapsedSeconds", sample.elapsedSeconds},
          {"graceSeconds", idleCpuAlarmGraceSeconds}});
    once(footprint >= absoluteAlarmThresholdMB, "absolute",
         {{"thresholdMB", absoluteAlarmThresholdMB}});
    const double baseline = sessionBaselineMB_.value_or(0);
    once(sessionBaselineMB_ &&
             footprint >= std::max(baseline * baselineAlarmMultiple, baselineAlarmFloorMB),
         "baselineMultiple", {{"baselineMB", baseline}, {"multiple", baselineAlarmMultiple}});
    const double previous = lastSampleFootprintMB_.value_or(footprint);
    once(footprint - previous >= growthSpikeMB, "growthSpike",
         {{"deltaMB", footprint - previous},
          {"previousMB", previous},
          {"intervalSeconds", sampleIntervalSeconds}});
    const auto crossed =
        std::min(static_cast<std::int64_t>(std::floor(footprint / mbPerGB)), maxAlarmThresholdGB);
    while (emittedThresholdGB_ < crossed) {
        ++emittedThresholdGB_;
        emitAlarm("gigabyteMilestone", {{"thresholdGB", emittedThresholdGB_}}, sample);
    }
}

void IdleMemorySentinel::emitAlarm(const char* kind, const LogFields& detail,
                                   const Sample& sample) {
    const double baseline = sessionBaselineMB_.value_or(0);
    JSON::Value windows = JSON::Value::array();
    for (const Window& window :
         environment_.windows ? environment_.windows() : std::vector<Window>()) {
        windows.push_back({{"title", window.title},
                           {"isVisible", window.isVisible},
                           {"isKeyWindow", window.isKeyWindow},
                           {"isMainWindow", window.isMainWindow},
                           {"isMiniaturized", window.isMiniaturized},
                           {"level", window.level},
                           {"frame", {{"width", window.width}, {"height", window.height}}}});
    }
    const JSON::Value host = DiagnosticsNDJSONWriter::object(environment_.figures.host());
    if (alarmWriter_) {
        JSON::Value record = baseRecord(sample);
        record.update({{"phase", "alarm"},
                       {"alarmKind", kind},
                       {"alarmDetail", DiagnosticsNDJSONWriter::object(detail)},
                       {"windows", windows},
                       {"host", host},
                       {"footprintMB", sample.memory.footprintMB},
                       {"residentMB", sample.memory.residentMB},
                       {"baselineMB", baseline},
                       {"runID", runID()},
                       {"lightweight", false}});
        alarmWriter_->append(record);
    }
    // The fields of an event are not nested, so the windows and the host are JSON texts.
    LogFields fields{{"phase", "alarm"},
                     {"alarmKind", kind},
                     {"reason", sample.reason},
                     {"elapsedSeconds", sample.elapsedSeconds},
                     {"cpuPercent", sample.cpuPercent},
                     {"footprintMB", sample.memory.footprintMB},
                     {"residentMB", sample.memory.residentMB},
                     {"baselineMB", baseline},
                     {"runID", runID()},
                     {"lightweight", !runDirectory_},
                     {"windows", JSON::line(windows).value_or("")},
                     {"host", JSON::line(host).value_or("")}};
    fields.add(detail).add(sample.appState);
    environment_.logger.important("idleMemorySentinel.alarm", fields);
}

void IdleMemorySentinel::stop(const std::string& reason) {
    if (!isRunning_)
        return;
    write(takeSample("stop", reason));
    end();
}

/// Closes the writers on another queue: closing waits for the disk, and the caller may be starting
/// a session.
void IdleMemorySentinel::end() {
    timer_.cancel();
    timer_ = {};
    isRunning_ = false;
    if (sampleWriter_) {
        closingQueue_->async([samples = std::shared_ptr(std::move(sampleWriter_)),
                              alarms = std::shared_ptr(std::move(alarmWriter_))] {
            samples->close();
            alarms->close();
        });
    }
    runDirectory_.reset();
    snapshotProvider_ = {};
    sessionBaselineMB_.reset();
    lastSampleFootprintMB_.reset();
    emittedThresholdGB_ = 0;
    firedAlarmKinds_.clear();
}

} // namespace tessarune
