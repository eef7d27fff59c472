#pragma once

#include "Tessarune/platform/speech-engine/SpeechModels.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tessarune {

/// Seconds of processor time that this process has used, on all its threads. Does not advance while
/// the process is stopped or swapped out, or the computer is suspended. Any thread.
double processorSecondsOfProcess();

/// How the engine is driven.
struct RecognitionPolicy {
    /// The cutoff of the high-pass filter in Hz; 0: no filter. Rumble makes the engine miss words,
    /// and the engine needs little of the speech below the cutoff.
    double lowestHertz = 200;
    bool removesHum = true; ///< mains hum can keep the engine from hearing speech at all
    /// Seconds between two passes while the computer is fast enough.
    double passInterval = 0.2;
    /// The minimum time from the start of one pass to the next, as a multiple of the pass's cost; 2
    /// leaves half of the time to other programs.
    double passCostFactor = 2;
    /// The maximum seconds that `passCostFactor` leaves between the end of a pass and the start of
    /// the next.
    double longestIdle = 2.0;
    /// With this many seconds of new sound, the next pass starts at once, so that pauses between
    /// passes do not delay a file that plays faster than real time.
    double enoughSound = 4.0;
    /// A clock that measures the cost of a pass. With the elapsed time alone, a suspension of the
    /// process would count as work.
    std::function<double()> processorSeconds = processorSecondsOfProcess;
    /// Words wait for confirmation by the next pass only if it follows within this many seconds.
    double longestWaitForAgreement = 0.6;
    /// A line shorter than this many seconds is not closed early: the engine closes it at the next
    /// pause, which is a better place.
    double shortestLineToClose = 5;
    /// A line is closed early only at a short rest between two words, for which the session waits
    /// at most this many seconds.
    double longestWaitForRest = 1.0;
    /// Live sound is continuous. After this many seconds without sound, the source is gone: the
    /// open line is closed, so that its text does not wait until the source returns.
    double longestStall = 2.0;
    /// The maximum seconds of unprocessed sound. A longer backlog is dropped: a computer that
    /// cannot keep up skips sound, and its memory does not fill.
    double longestBacklog = 60;
    /// The number of complete lines after which the engine's stream is recreated to keep its list
    /// of lines short.
    std::size_t linesBeforeRestart = 300;
    /// The memory of this computer; 0 if unknown. A recording is transcribed with the largest model
    /// that fits into it. The model for live sound does not depend on it.
    std::uint64_t memoryBytes = memoryBytesOfComputer();
};

} // namespace tessarune
