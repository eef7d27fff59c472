#pragma once

#include "TessaruneCore/diagnostics/LogFields.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Seam: what the operating system says of this process and this computer. Any thread. Nothing
/// throws: what cannot be found out is 0, empty or absent.
class ProcessFigures {
  public:
    struct Memory {
        double footprintMB = 0; ///< what the process alone costs the computer, swapped out or not
        double residentMB = 0;
    };
    struct Thread {
        std::int64_t id = 0;
        bool isMain = false;
        double userSeconds = 0; ///< processor time since the thread began
        double systemSeconds = 0;
        std::string runState; ///< "running", "sleeping", "waiting for the disk", …
        std::int64_t flags = 0;
    };

    virtual ~ProcessFigures() = default;

    /// Processor time of all threads since the process began.
    virtual double cpuSeconds() = 0;
    virtual Memory memory() = 0;
    virtual std::vector<Thread> threads() = 0;
    /// "nominal", "fair", "serious", "critical" or "unknown".
    virtual std::string thermalState() = 0;
    /// Processors that this process may use now.
    virtual std::int64_t activeProcessorCount() = 0;
    /// Absent where the computer has no such mode.
    virtual std::optional<bool> lowPowerMode() = 0;
    /// What computer this is, under the keys of a run's "host".
    virtual LogFields host() = 0;
};

} // namespace tessarune
