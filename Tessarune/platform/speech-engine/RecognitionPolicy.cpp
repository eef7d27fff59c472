#include "Tessarune/platform/speech-engine/RecognitionPolicy.h"

#include <time.h>

namespace tessarune {

double processorSecondsOfProcess() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace tessarune
