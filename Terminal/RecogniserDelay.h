#pragma once

#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <string>

namespace tessarune {

/// The delay of a session's recogniser behind its sound. Main queue, unless noted; the references
/// must outlive it.
class RecogniserDelay {
  public:
    RecogniserDelay(Host& host, const LiveSystemAudioTranscriber& transcriber)
        : host_(host), transcriber_(transcriber) {}
    ~RecogniserDelay() {
        endWatch();
        endProgress();
    }
    RecogniserDelay(const RecogniserDelay&) = delete;

    /// The seconds of sound that the recogniser has processed. Any thread.
    double processedSeconds() const;
    /// The seconds of sound that it has not processed yet. Any thread.
    double secondsBehind() const;

    /// From now on, reports a delay of some seconds, and reports again whenever the delay has
    /// doubled. Time in which the program or the computer was suspended does not count.
    void watch(std::function<void(const std::string&)> say);
    void endWatch() { watch_.cancel(); }

    /// Begins to report each new per cent of `duration` seconds that the recogniser has processed.
    void watchProgress(double duration, std::function<void(int percent)> say);
    void endProgress() { progressWatch_.cancel(); }

    /// Resumes when the recogniser has caught up or makes no progress, or when `isCancelled`
    /// returns true.
    Task<void> caughtUp(std::function<bool()> isCancelled);

  private:
    void checkDelay();
    void checkProgress(double duration);

    Host& host_;
    const LiveSystemAudioTranscriber& transcriber_;
    std::function<void(const std::string&)> say_;
    DelayedCall watch_;
    std::function<void(int percent)> sayProgress_;
    DelayedCall progressWatch_;
    int percent_ = 0;              ///< the percentage that was reported last
    double nextCheckAt_ = 0;       ///< host time
    double excusedUntil_ = 0;      ///< host time; until then, no delay is reported
    double lastBehind_ = 0;        ///< seconds behind at the last check
    double nextReportedDelay_ = 5; ///< seconds
};

} // namespace tessarune
