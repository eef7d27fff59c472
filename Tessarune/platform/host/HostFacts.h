#pragma once

#include <string>

namespace tessarune {

/// Facts about this computer for a log; 0 or empty if unknown. Never fails. Any thread.
struct HostFacts {
    std::string system; ///< kernel name, kernel release and processor architecture
    int activeProcessorCount = 0;
    double physicalMemoryGB = 0;

    static HostFacts current();
};

} // namespace tessarune
