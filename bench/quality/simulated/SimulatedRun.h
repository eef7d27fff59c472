#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "bench/quality/WordTrace.h"

#include <filesystem>

namespace tessarune {

/// Runs the recogniser with the real engine over a file, on simulated time, so that the result does
/// not depend on the load of this computer.
///
/// A pass of the engine takes as long as on an idle computer (see `passSeconds`); nothing else
/// takes time. The program above the recogniser is left out, except for the time that a guess takes
/// to reach the screen. For this reason no long line is closed early.
class SimulatedRun {
  public:
    /// Runs until the end of the file. Lines that begin before the second `from` of the file are
    /// heard, but are not in `history`. Throws if the file or the engine fails.
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
