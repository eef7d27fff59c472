#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "bench/quality/WordTrace.h"

#include <filesystem>

namespace tessarune {

/// Runs the recogniser with the real engine over a file, on simulated time, so that the result does
/// not depend on the load of this computer.
///
/// A pass of the engine takes as long as on an idle computer (see `passSeconds`), and a guess takes
/// some time to reach the screen; nothing else takes time. The program above the recogniser is left
/// out, so nothing asks the recogniser to close a long line early.
class SimulatedRun {
  public:
    /// Runs until the end of the file. Lines that begin before `from`, in seconds of the file, are
    /// recognised, but are not in `history`. Throws if the file or the engine fails.
    SimulatedRun(ModelStore& models, const std::filesystem::path& file, double from);

    /// Times in seconds since the sound began.
    const WordHistory& history() const { return history_; }
    /// The real processor time of the engine, including the loading of the model.
    double processorSeconds() const { return processorSeconds_; }

  private:
    WordHistory history_;
    double processorSeconds_ = 0;
};

} // namespace tessarune
