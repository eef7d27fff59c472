#include "Tessarune/diagnostics/PerfSampler.h"

#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

constexpr double probeInterval = 0.25; // seconds
constexpr double percent = 100;
constexpr double lagMSPerSecond = 1000;
constexpr std::size_t topThreads = 8;

} // namespace

/// On the sampler's queue alone.
struct PerfSampler::State {
    State(Host& host, FileSystem& files, ProcessFigures& itsFigures, const DiagnosticsRunFiles& run)
        : figures(itsFigures),
          samples(host, files, run.path("perfSamples"), "Tessarune.PerfSampler.samples"),
          threads(host, files, run.path("perfThreads"), "Tessarune.PerfSampler.threads"),
          pipeline(host, files, run.path("perfPipeline"), "Tessarune.PerfSampler.pipeline") {
        samples.appendText("t,cpuPercent,footprintMB,residentMB,thermalState,activeProcessorCount,"
                           "lowPowerMode,mainThreadLagMS\n");
    }

    ProcessFigures& figures;
    DiagnosticsNDJSONWriter samples;
    DiagnosticsNDJSONWriter threads;
    DiagnosticsNDJSONWriter pipeline;
    double startedAt = 0;
    double sampledAt = 0;
    double cpuSeconds = 0;
    double highestLagMS = 0; ///< of the main queue, since the last sample
    std::map<std::int64_t, double> threadSeconds;
    PerfStats metrics;

    void begin(double now) {
        startedAt = sampledAt = now;
        cpuSeconds = figures.cpuSeconds();
        for (const auto& thread : figures.threads())
            threadSeconds[thread.id] = thread.userSeconds + thread.systemSeconds;
    }

    /// The queue may be late, so the time is that of the reading. What comes too soon after another
    /// sample is none, and the next one has its lag.
    void sample(double now, double itsLagMS, const PerfStats& current) {
        constexpr double jitter = 0.05;
        const double elapsed = now - sampledAt;
        highestLagMS = std::max(highestLagMS, itsLagMS);
        if (elapsed < shortestInterval - jitter)
            return;
        sampledAt = now;
        const double lagMS = std::exchange(highestLagMS, 0);
        const double cpu = figures.cpuSeconds();
        const double cpuPercent = (cpu - std::exchange(cpuSeconds, cpu)) / elapsed * percent;
        const double t = now - startedAt;
        const auto memory = figures.memory();
        const std::string row = Text::fixed(t, 1) + "," + Text::fixed(cpuPercent, 1) + "," +
                                Text::fixed(memory.footprintMB, 1) + "," +
                                Text::fixed(memory.residentMB, 1) + "," + figures.thermalState() +
                                "," + std::to_string(figures.activeProcessorCount()) + "," +
                                (figures.lowPowerMode().value_or(false) ? "true" : "false") + "," +
                                Text::fixed(lagMS, 0) + "\n";
        samples.appendText(row);
        const JSON::Value head{
            {"t", t}, {"processCPUPercent", cpuPercent}, {"mainThreadLagMS", lagMS}};
        JSON::Value busiest = head;
        busiest["topThreads"] = topByCPU(elapsed);
        threads.append(busiest);
        JSON::Value counters = head;
        counters["metrics"] = current;
        counters["delta"] = delta(current, metrics);
        pipeline.append(counters);
        metrics = current;
    }

  private:
    JSON::Value topByCPU(double elapsed) {
        std::vector<std::pair<double, ProcessFigures::Thread>> busy;
        std::map<std::int64_t, double> seconds;
        for (auto& thread : figures.threads()) {
            const double total = thread.userSeconds + thread.systemSeconds;
            const auto before = threadSeconds.find(thread.id);
            const double since = total - (before == threadSeconds.end() ? 0 : before->second);
            seconds[thread.id] = total;
            busy.emplace_back(since / elapsed * percent, std::move(thread));
        }
        threadSeconds = std::move(seconds);
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
                            {"dispatchQAddr", "0x0"}}); // a thread here belongs to no queue
        }
        return list;
    }
};

void PerfSampler::start(const DiagnosticsRunFiles& run, double sampleIntervalSeconds,
                        std::function<PerfStats()> pipelineSnapshot) {
    stop();
    state_ = std::make_shared<State>(host_, files_, figures_, run);
    queue_ = host_.serialQueue("Tessarune.PerfSampler", QueuePriority::utility);
    pipelineSnapshot_ = std::move(pipelineSnapshot);
    interval_ = std::max(sampleIntervalSeconds, shortestInterval);
    highestLag_ = 0;
    probeDue_ = host_.now();
    sampleDue_ = probeDue_ + interval_;
    queue_->async([state = state_, &host = host_] { state->begin(host.now()); });
    arm();
}

void PerfSampler::arm() {
    probeDue_ = host_.now() + std::min(probeInterval, interval_);
    timer_ = host_.after(probeDue_ - host_.now(), [this] { probe(); });
}

void PerfSampler::probe() {
    const double now = host_.now();
    highestLag_ = std::max(highestLag_, now - probeDue_);
    if (now >= sampleDue_) {
        sampleDue_ = std::max(sampleDue_ + interval_, now + shortestInterval);
        queue_->async([state = state_, &host = host_,
                       lag = std::exchange(highestLag_, 0) * lagMSPerSecond,
                       metrics = pipelineSnapshot_()] { state->sample(host.now(), lag, metrics); });
    }
    arm();
}

void PerfSampler::stop() {
    timer_.cancel();
    timer_ = {};
}

void PerfSampler::close(nlohmann::json& lost) {
    if (!queue_)
        return;
    queue_->sync([this, &lost] {
        const auto end = [&](const char* artifact, DiagnosticsNDJSONWriter& log) {
            log.close();
            if (log.lostRecords() > 0)
                lost[artifact] = log.lostRecords();
        };
        end("perfSamples", state_->samples);
        end("perfThreads", state_->threads);
        end("perfPipeline", state_->pipeline);
    });
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
