#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "bench/quality/WordTrace.h"

#include <filesystem>

namespace tessarune {

/// The recogniser with the real engine over a file, on simulated time: the same result however busy
/// this computer is.
///
/// A look of the engine takes as long as it would on an idle computer (see `lookSeconds`); nothing
/// else takes time. What is above the recogniser is left out but for the time that a guess takes to
/// the screen, so nobody asks for a long line to be closed.
class SimulatedRun {
  public:
    /// Runs. What is heard before `from` (seconds) is a lead-in. Throws.
    SimulatedRun(ModelStore& models, const std::filesystem::path& file, double from);

    /// Times in seconds since the sound began.
    const WordHistory& history() const { return history_; }
    /// What the engine really took, the loading of the model included.
    double processorSeconds() const { return processorSeconds_; }

  private:
    WordHistory history_;
    double processorSeconds_ = 0;
};

} // namespace tessarune
