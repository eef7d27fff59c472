#include "Tessarune/platform/process-figures/LinuxProcessFigures.h"

#include <sched.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace tessarune {

namespace {

namespace fs = std::filesystem;

constexpr double kilobytesPerMB = 1024;

/// The contents of a file; empty if it cannot be read: many sensors exist but do not answer, and a
/// thread may have ended.
std::string contentsOf(const fs::path& path) {
    std::ifstream file(path);
    std::string text;
    char block[4096];
    while (file) {
        file.read(block, sizeof block); // does not throw, unlike a buffer iterator
        text.append(block, static_cast<std::size_t>(file.gcount()));
    }
    return file.bad() ? std::string() : text;
}

/// The entries of a folder, as far as they can be listed.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        entries.push_back(at->path());
    return entries;
}

std::string firstLineOf(const fs::path& path) {
    const std::string text = contentsOf(path);
    return text.substr(0, text.find('\n'));
}

std::optional<std::int64_t> numberIn(std::string_view text) {
    const std::size_t at = text.find_first_of("-0123456789");
    std::int64_t number = 0;
    if (at == std::string_view::npos ||
        std::from_chars(text.data() + at, text.data() + text.size(), number).ec != std::errc())
        return std::nullopt;
    return number;
}

/// The value after `name` in a text of lines "name: value"; empty if there is none.
std::string_view valueOf(std::string_view text, std::string_view name) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, end - at);
        if (line.starts_with(name)) {
            const std::size_t colon = line.find(':');
            const std::size_t value =
                colon == std::string_view::npos ? colon : line.find_first_not_of(" \t", colon + 1);
            return value == std::string_view::npos ? std::string_view() : line.substr(value);
        }
        at = end + 1;
    }
    return {};
}

/// The distribution's name and version; empty if they are not known.
std::string distribution(const fs::path& root) {
    constexpr std::string_view key = "PRETTY_NAME=";
    std::istringstream lines(contentsOf(root / "etc/os-release"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) {
            std::erase(line, '"');
            return line.substr(key.size());
        }
    }
    return {};
}

std::string runState(std::string_view letter) {
    if (letter == "R")
        return "running";
    if (letter == "S")
        return "sleeping";
    if (letter == "D")
        return "waiting for the disk";
    if (letter == "T" || letter == "t")
        return "stopped";
    if (letter == "Z" || letter == "X")
        return "ended";
    return "unknown";
}

/// The memory limit of the root cgroup in bytes; in a container, this is the container's limit.
/// `nullopt` if there is no limit.
std::optional<std::int64_t> cgroupMemoryLimit(const fs::path& root) {
    const std::string text = firstLineOf(root / "sys/fs/cgroup/memory.max");
    return text.empty() || text == "max" ? std::nullopt : numberIn(text);
}

} // namespace

std::filesystem::path LinuxProcessFigures::executable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

double LinuxProcessFigures::cpuSeconds() {
    rusage usage{};
    if (::getrusage(RUSAGE_SELF, &usage) != 0)
        return 0;
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

ProcessFigures::Memory LinuxProcessFigures::memory() {
    const std::string status = contentsOf(root_ / "proc/self/status");
    const auto megabytes = [&](std::string_view name) {
        return static_cast<double>(numberIn(valueOf(status, name)).value_or(0)) / kilobytesPerMB;
    };
    return {megabytes("RssAnon:") + megabytes("RssShmem:") + megabytes("VmSwap:"),
            megabytes("VmRSS:")};
}

std::vector<ProcessFigures::Thread> LinuxProcessFigures::threads() {
    const auto ticks = static_cast<double>(std::max(::sysconf(_SC_CLK_TCK), 1L));
    std::vector<Thread> found;
    for (const fs::path& entry : entriesOf(root_ / "proc/self/task")) {
        // A thread's name may contain blanks and brackets; the fields start after the last bracket.
        const std::string stat = contentsOf(entry / "stat");
        const std::size_t bracket = stat.rfind(')');
        if (bracket == std::string::npos)
            continue; // the thread has ended meanwhile
        std::istringstream fields(stat.substr(bracket + 1));
        const std::vector<std::string> values{std::istream_iterator<std::string>(fields), {}};
        // Places after the name, as listed in proc(5)
        constexpr std::size_t flagsAt = 6;
        constexpr std::size_t userAt = 11;
        constexpr std::size_t systemAt = 12;
        if (values.size() <= systemAt)
            continue;
        Thread thread;
        thread.id = numberIn(entry.filename().string()).value_or(0);
        thread.isMain = thread.id == ::getpid();
        thread.userSeconds = static_cast<double>(numberIn(values[userAt]).value_or(0)) / ticks;
        thread.systemSeconds = static_cast<double>(numberIn(values[systemAt]).value_or(0)) / ticks;
        thread.runState = runState(values[0]);
        thread.flags = numberIn(values[flagsAt]).value_or(0);
        found.push_back(std::move(thread));
    }
    return found;
}

/// The worst state of all zones that declare a passive, hot or critical temperature.
std::string LinuxProcessFigures::thermalState() {
    constexpr std::int64_t fairBelowPassive = 10000; // thousandths of a degree
    std::string state = "unknown";
    int rank = -1;
    for (const fs::path& zone : entriesOf(root_ / "sys/class/thermal")) {
        if (!zone.filename().string().starts_with("thermal_zone"))
            continue;
        const auto temperature = numberIn(firstLineOf(zone / "temp"));
        if (!temperature)
            continue;
        std::optional<std::int64_t> passive;
        std::optional<std::int64_t> critical; // the lowest hot or critical temperature
        constexpr int maximumTripPoints = 12;
        for (int i = 0; i < maximumTripPoints; ++i) {
            const std::string point = "trip_point_" + std::to_string(i);
            const std::string kind = firstLineOf(zone / (point + "_type"));
            if (kind == "passive")
                passive = numberIn(firstLineOf(zone / (point + "_temp")));
            if (kind == "critical" || kind == "hot") {
                const auto limit = numberIn(firstLineOf(zone / (point + "_temp")));
                if (limit && (!critical || *limit < *critical))
                    critical = limit;
            }
        }
        if (!passive && !critical)
            continue;
        int zoneRank = 0;
        if (passive && *temperature >= *passive - fairBelowPassive)
            zoneRank = 1;
        if (passive && *temperature >= *passive)
            zoneRank = 2;
        if (critical && *temperature >= *critical)
            zoneRank = 3;
        rank = std::max(rank, zoneRank);
    }
    if (rank >= 0) {
        static constexpr std::string_view names[] = {"nominal", "fair", "serious", "critical"};
        state = names[rank];
    }
    return state;
}

std::int64_t LinuxProcessFigures::activeProcessorCount() {
    cpu_set_t set;
    if (::sched_getaffinity(0, sizeof set, &set) == 0)
        return CPU_COUNT(&set);
    return std::max(::sysconf(_SC_NPROCESSORS_ONLN), 0L);
}

/// The power profile of the firmware; few desktop computers have one.
std::optional<bool> LinuxProcessFigures::lowPowerMode() {
    const std::string profile = firstLineOf(root_ / "sys/firmware/acpi/platform_profile");
    return profile.empty() ? std::nullopt : std::optional(profile == "low-power");
}

LogFields LinuxProcessFigures::host() {
    constexpr double bytesPerGB = 1024.0 * 1024 * 1024;
    LogFields facts;
    utsname names{};
    if (::uname(&names) == 0) {
        const std::string kernel = std::string(names.sysname) + " " + names.release;
        const std::string system = distribution(root_);
        facts.add("osVersion", system.empty() ? kernel : system + ", " + kernel);
        facts.add("hardwareMachine", std::string(names.machine));
    }
    facts.add("processorCount", std::int64_t{std::max(::sysconf(_SC_NPROCESSORS_CONF), 0L)});
    std::int64_t bytes = std::int64_t{::sysconf(_SC_PHYS_PAGES)} * ::sysconf(_SC_PAGE_SIZE);
    if (const auto limit = cgroupMemoryLimit(root_))
        bytes = std::min(bytes, *limit);
    facts.add("physicalMemoryBytes", bytes);
    facts.add("physicalMemoryGB", static_cast<double>(bytes) / bytesPerGB);
    const std::string model = firstLineOf(root_ / "sys/class/dmi/id/product_name");
    facts.add("machineModel", model.empty() ? "unknown" : model);
    const std::string cpu = contentsOf(root_ / "proc/cpuinfo");
    const std::string_view brand = valueOf(cpu, "model name");
    facts.add("cpuBrand", brand.empty() ? "unknown" : std::string(brand));
    return facts;
}

} // namespace tessarune
