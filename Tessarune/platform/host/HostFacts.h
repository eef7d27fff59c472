#pragma once

#include <string>

namespace tessarune {

/// Facts about this computer for a log. Any thread; never fails: unknown facts are 0 or empty.
struct HostFacts {
    std::string system; ///< name and release of the kernel, and the processor's kind
    int activeProcessorCount = 0;
    double physicalMemoryGB = 0;

    static HostFacts current();
};

} // namespace tessarune
