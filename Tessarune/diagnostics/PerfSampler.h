#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <memory>

namespace tessarune {

/// Writes figures of the process at a fixed interval: its load, its memory, the delay of its main
/// queue, and the counters of the captions.
///
/// Main queue, except `close`. Timers on its own queue read and write everything, so that it
/// samples even while the main queue stalls. All references outlive it.
class PerfSampler {
  public:
    static constexpr double shortestInterval = 0.5; ///< seconds

    PerfSampler(Host& host, FileSystem& files, ProcessFigures& figures)
        : host_(host), files_(files), figures_(figures) {}
    ~PerfSampler();
    PerfSampler(const PerfSampler&) = delete;

    void start(const DiagnosticsRunFiles& run, double sampleIntervalSeconds);
    /// Sets the counters of the pipeline for the next samples.
    void notePipeline(const PerfStats& counters);
    /// Ends the sampling. May be called again.
    void stop();
    /// Waits until all queued records are written, closes the files, and adds the number of lost
    /// records of each file to `lost`. Any thread, but never the sampler's queue.
    void close(nlohmann::json& lost);

    /// The increase of each counter; one without a previous value counts from 0.
    static PerfStats delta(const PerfStats& current, const PerfStats& previous);

  private:
    class State;

    Host& host_;
    FileSystem& files_;
    ProcessFigures& figures_;
    std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<State> state_; // used on the queue
};

} // namespace tessarune
