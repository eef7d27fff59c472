#pragma once

#include "TessaruneCore/diagnostics/LogFields.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Interface: the operating system's figures about this process and this computer. Any thread. No
/// function throws: an unknown value is 0, empty or absent.
class ProcessFigures {
  public:
    struct Memory {
        double footprintMB = 0; ///< memory of this process alone, including swapped-out memory
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
    /// `nullopt` if the computer has no such mode.
    virtual std::optional<bool> lowPowerMode() = 0;
    /// A description of the computer, with the keys of a run's "host".
    virtual LogFields host() = 0;
};

} // namespace tessarune
