#pragma once

#include <ctime>

/// Processor time, in seconds. Unlike wall-clock time, it does not count the work of other
/// processes on the computer, but it still depends on how they leave the caches.
namespace tessarune::CPUClock {

/// The time of any clock of the system, in seconds.
inline double read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

inline double thread() {
    return read(CLOCK_THREAD_CPUTIME_ID);
}
inline double process() {
    return read(CLOCK_PROCESS_CPUTIME_ID);
}

} // namespace tessarune::CPUClock
