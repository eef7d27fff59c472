#pragma once

#include <string>

namespace tessarune {

/// What computer this is, as far as a log of it helps. Any thread; nothing can go wrong: what the
/// system does not tell is 0 or empty.
struct HostFacts {
    std::string system; ///< name and release of the kernel, and the processor's kind
    int activeProcessorCount = 0;
    double physicalMemoryGB = 0;

    static HostFacts current();
};

} // namespace tessarune
