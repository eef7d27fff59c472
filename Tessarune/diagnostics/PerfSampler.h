#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <memory>

namespace tessarune {

/// Writes what the process costs at a fixed interval: processor, memory and how late the main queue
/// runs what is given to it, beside the counters of the captions.
///
/// Main queue; everything is read and written by timers of a queue of its own, so that there are
/// samples, too, while the main queue stalls. All references outlive it.
class PerfSampler {
  public:
    static constexpr double shortestInterval = 0.5; ///< seconds

    PerfSampler(Host& host, FileSystem& files, ProcessFigures& figures)
        : host_(host), files_(files), figures_(figures) {}
    ~PerfSampler();
    PerfSampler(const PerfSampler&) = delete;

    void start(const DiagnosticsRunFiles& run, double sampleIntervalSeconds);
    /// The counters of the pipeline, for the samples from now on.
    void notePipeline(const PerfStats& counters);
    /// No further sample. Idempotent.
    void stop();
    /// Waits for what is queued; adds how many records are missing. Not on the sampler's queue.
    void close(nlohmann::json& lost);

    /// Each counter less its value before.
    static PerfStats delta(const PerfStats& current, const PerfStats& previous);

  private:
    class State;

    Host& host_;
    FileSystem& files_;
    ProcessFigures& figures_;
    std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<State> state_; // the queue's once it is started
};

} // namespace tessarune
