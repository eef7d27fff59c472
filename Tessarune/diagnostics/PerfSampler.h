#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <memory>

namespace tessarune {

/// Writes what the process costs at a fixed interval: processor, memory and how late the main queue
/// runs what is due on it, beside the counters of the captions.
///
/// Main queue; the figures are read and written on a queue of its own. The timer is the main
/// queue's: while that stalls there is no sample, and the next one says for how long. All
/// references outlive it.
class PerfSampler {
  public:
    static constexpr double shortestInterval = 0.5; ///< seconds

    PerfSampler(Host& host, FileSystem& files, ProcessFigures& figures)
        : host_(host), files_(files), figures_(figures) {}
    ~PerfSampler() { stop(); }
    PerfSampler(const PerfSampler&) = delete;

    /// `pipelineSnapshot` gives the counters of this moment, on the main queue.
    void start(const DiagnosticsRunFiles& run, double sampleIntervalSeconds,
               std::function<PerfStats()> pipelineSnapshot);
    /// No further sample. Idempotent.
    void stop();
    /// Waits for what is queued; adds how many records are missing. Not on the sampler's queue.
    void close(nlohmann::json& lost);

    /// Each counter less its value before.
    static PerfStats delta(const PerfStats& current, const PerfStats& previous);

  private:
    struct State;

    void arm();
    void probe();

    Host& host_;
    FileSystem& files_;
    ProcessFigures& figures_;
    std::shared_ptr<State> state_; // the sampler queue's once it is started
    std::shared_ptr<SerialQueue> queue_;
    std::function<PerfStats()> pipelineSnapshot_;
    DelayedCall timer_;
    double interval_ = 0;
    double probeDue_ = 0;
    double sampleDue_ = 0;
    double highestLag_ = 0; // seconds, since the last sample
};

} // namespace tessarune
