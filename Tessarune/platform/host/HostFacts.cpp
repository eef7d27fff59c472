#include "Tessarune/platform/host/HostFacts.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>

namespace tessarune {

HostFacts HostFacts::current() {
    constexpr double bytesPerGB = 1024.0 * 1024 * 1024;
    HostFacts facts;
    utsname names{};
    if (::uname(&names) == 0)
        facts.system = std::string(names.sysname) + " " + names.release + " " + names.machine;
    facts.activeProcessorCount = static_cast<int>(std::max(::sysconf(_SC_NPROCESSORS_ONLN), 0L));
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGE_SIZE);
    if (pages > 0 && pageSize > 0)
        facts.physicalMemoryGB =
            static_cast<double>(pages) * static_cast<double>(pageSize) / bytesPerGB;
    return facts;
}

} // namespace tessarune
