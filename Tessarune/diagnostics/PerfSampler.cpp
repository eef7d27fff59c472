#include "Tessarune/diagnostics/PerfSampler.h"

#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

constexpr double shortestProbeInterval = 0.25; // seconds
constexpr double probesPerSample = 20;
constexpr double percent = 100;
constexpr double lagMSPerSecond = 1000;
constexpr std::size_t topThreads = 8;

} // namespace

/// Used only on the sampler's queue, except for `notePipeline`. Timers and probes hold it weakly.
class PerfSampler::State : public std::enable_shared_from_this<State> {
  public:
    State(Host& host, FileSystem& files, ProcessFigures& figures, const DiagnosticsRunFiles& run,
          std::shared_ptr<SerialQueue> queue, double interval)
        : host_(host),
          figures_(figures),
          queue_(std::move(queue)),
          interval_(std::max(interval, shortestInterval)),
          samples_(host, files, run.path("perfSamples"), "Tessarune.PerfSampler.samples"),
          threads_(host, files, run.path("perfThreads"), "Tessarune.PerfSampler.threads"),
          pipeline_(host, files, run.path("perfPipeline"), "Tessarune.PerfSampler.pipeline") {
        samples_.appendText("t,cpuPercent,footprintMB,residentMB,thermalState,activeProcessorCount,"
                            "lowPowerMode,mainThreadLagMS\n");
    }

    /// Any thread.
    void notePipeline(const PerfStats& counters) {
        const MutexLock lock(lock_);
        counters_ = counters;
    }

    void begin() {
        startedAt_ = sampledAt_ = host_.now();
        cpuSeconds_ = figures_.cpuSeconds();
        for (const auto& thread : figures_.threads())
            threadSeconds_[thread.id] = thread.userSeconds + thread.systemSeconds;
        sampleDue_ = startedAt_ + interval_;
        armSample();
        armProbe();
    }

    void stop() {
        sampleTimer_.cancel();
        probeTimer_.cancel();
        isStopped_ = true;
    }

    void close(nlohmann::json& lost) {
        const auto end = [&](const char* artifact, DiagnosticsNDJSONWriter& log) {
            log.close();
            if (log.lostRecords() > 0)
                lost[artifact] = log.lostRecords();
        };
        end("perfSamples", samples_);
        end("perfThreads", threads_);
        end("perfPipeline", pipeline_);
    }

  private:
    void armSample() { sampleTimer_ = later(sampleDue_ - host_.now(), &State::takeSample); }

    void takeSample() {
        const double now = host_.now();
        sampleDue_ = std::max(sampleDue_ + interval_, now + shortestInterval);
        armSample();
        if (probeSentAt_) // the main queue has not run the probe yet
            highestLag_ = std::max(highestLag_, now - *probeSentAt_);
        write(now, std::exchange(highestLag_, 0) * lagMSPerSecond);
    }

    void armProbe() {
        const double seconds = std::max(shortestProbeInterval, interval_ / probesPerSample);
        probeTimer_ = later(seconds, &State::sendProbe);
    }

    /// Posts a probe to the main queue. Only one is pending at a time.
    void sendProbe() {
        probeSentAt_ = host_.now();
        host_.post([this, weak = weak_from_this(), sentAt = *probeSentAt_] {
            const auto alive = weak.lock();
            if (!alive)
                return;
            const double lag = host_.now() - sentAt;
            queue_->async([this, weak, lag] {
                if (const auto state = weak.lock())
                    probeLanded(lag);
            });
        });
    }

    void probeLanded(double lag) {
        highestLag_ = std::max(highestLag_, lag);
        probeSentAt_.reset();
        if (!isStopped_)
            armProbe();
    }

    DelayedCall later(double seconds, void (State::*method)()) {
        return queue_->after(seconds, [this, weak = weak_from_this(), method] {
            if (const auto state = weak.lock())
                (this->*method)();
        });
    }

    void write(double now, double lagMS) {
        const double elapsed = now - std::exchange(sampledAt_, now);
        const double cpu = figures_.cpuSeconds();
        const double cpuPercent = (cpu - std::exchange(cpuSeconds_, cpu)) / elapsed * percent;
        const double t = now - startedAt_;
        const auto memory = figures_.memory();
        const std::string row = Text::fixed(t, 1) + "," + Text::fixed(cpuPercent, 1) + "," +
                                Text::fixed(memory.footprintMB, 1) + "," +
                                Text::fixed(memory.residentMB, 1) + "," + figures_.thermalState() +
                                "," + std::to_string(figures_.activeProcessorCount()) + "," +
                                (figures_.lowPowerMode().value_or(false) ? "true" : "false") + "," +
                                Text::fixed(lagMS, 0) + "\n";
        samples_.appendText(row);
        const JSON::Value head{
            {"t", t}, {"processCPUPercent", cpuPercent}, {"mainThreadLagMS", lagMS}};
        JSON::Value busiest = head;
        busiest["topThreads"] = topByCPU(elapsed);
        threads_.append(busiest);
        JSON::Value record = head;
        PerfStats counters = this->counters();
        record["metrics"] = counters;
        record["delta"] = delta(counters, reportedCounters_);
        pipeline_.append(record);
        reportedCounters_ = std::move(counters);
    }

    PerfStats counters() {
        const MutexLock lock(lock_);
        return counters_;
    }

    JSON::Value topByCPU(double elapsed) {
        std::vector<std::pair<double, ProcessFigures::Thread>> busy;
        std::map<std::int64_t, double> seconds;
        for (auto& thread : figures_.threads()) {
            const double total = thread.userSeconds + thread.systemSeconds;
            const auto before = threadSeconds_.find(thread.id);
            const double used = total - (before == threadSeconds_.end() ? 0 : before->second);
            seconds[thread.id] = total;
            busy.emplace_back(used / elapsed * percent, std::move(thread));
        }
        threadSeconds_ = std::move(seconds);
        std::ranges::stable_sort(busy, std::ranges::greater{},
                                 [](const auto& entry) { return entry.first; });
        JSON::Value list = JSON::Value::array();
        for (std::size_t i = 0; i < std::min(busy.size(), topThreads); ++i) {
            const auto& [cpuPercent, thread] = busy[i];
            list.push_back({{"rankHint", i},
                            {"threadID", thread.id},
                            {"isMainThread", thread.isMain},
                            {"cpuPercent", std::round(cpuPercent * 10) / 10},
                            {"userSeconds", thread.userSeconds},
                            {"systemSeconds", thread.systemSeconds},
                            {"runState", thread.runState},
                            {"flags", thread.flags},
                            {"dispatchQAddr", "0x0"}}); // threads belong to no queue
        }
        return list;
    }

    Host& host_;
    ProcessFigures& figures_;
    const std::shared_ptr<SerialQueue> queue_;
    const double interval_; // seconds
    DiagnosticsNDJSONWriter samples_;
    DiagnosticsNDJSONWriter threads_;
    DiagnosticsNDJSONWriter pipeline_;
    DelayedCall sampleTimer_;
    DelayedCall probeTimer_;
    bool isStopped_ = false;
    double startedAt_ = 0;
    double sampledAt_ = 0;
    double sampleDue_ = 0;
    double cpuSeconds_ = 0;
    std::optional<double> probeSentAt_; // of the pending probe
    double highestLag_ = 0;             // seconds, of the main queue, since the last sample
    std::map<std::int64_t, double> threadSeconds_;
    PerfStats reportedCounters_;
    Mutex lock_;
    PerfStats counters_ GUARDED_BY(lock_);
};

PerfSampler::~PerfSampler() {
    if (queue_)
        queue_->sync([this] { state_->stop(); });
}

void PerfSampler::start(const DiagnosticsRunFiles& run, double sampleIntervalSeconds) {
    stop();
    queue_ = host_.serialQueue("Tessarune.PerfSampler", QueuePriority::utility);
    state_ = std::make_shared<State>(host_, files_, figures_, run, queue_, sampleIntervalSeconds);
    queue_->async([state = state_] { state->begin(); });
}

void PerfSampler::notePipeline(const PerfStats& counters) {
    if (state_)
        state_->notePipeline(counters);
}

void PerfSampler::stop() {
    if (queue_)
        queue_->async([state = state_] { state->stop(); });
}

void PerfSampler::close(nlohmann::json& lost) {
    if (queue_)
        queue_->sync([&] { state_->close(lost); });
}

PerfStats PerfSampler::delta(const PerfStats& current, const PerfStats& previous) {
    PerfStats change;
    for (const auto& [name, value] : current) {
        const auto before = previous.find(name);
        change[name] = before == previous.end() ? value : value - before->second;
    }
    return change;
}

} // namespace tessarune
