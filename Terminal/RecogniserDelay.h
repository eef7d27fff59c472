#pragma once

#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <string>

namespace tessarune {

/// The delay of a session's recogniser behind its sound. Main queue, except for `heardSeconds`; the
/// references outlive it.
class RecogniserDelay {
  public:
    RecogniserDelay(Host& host, const LiveSystemAudioTranscriber& transcriber)
        : host_(host), transcriber_(transcriber) {}
    ~RecogniserDelay() {
        endWatch();
        endProgress();
    }
    RecogniserDelay(const RecogniserDelay&) = delete;

    /// Seconds of sound that it has processed. Any thread.
    double heardSeconds() const;
    double secondsBehind() const;

    /// From now on reports a delay of some seconds, and again each time it has doubled. Time in
    /// which the program or the computer was suspended does not count.
    void watch(std::function<void(const std::string&)> say);
    void endWatch() { watch_.cancel(); }

    /// Reports how much of `duration` seconds it has processed, at each new per cent.
    void watchProgress(double duration, std::function<void(int percent)> say);
    void endProgress() { progressWatch_.cancel(); }

    /// Resumes when it has caught up, when `isCancelled` returns true, or when it makes no
    /// progress.
    Task<void> caughtUp(std::function<bool()> isCancelled);

  private:
    void look();
    void lookForProgress(double duration);

    Host& host_;
    const LiveSystemAudioTranscriber& transcriber_;
    std::function<void(const std::string&)> say_;
    DelayedCall watch_;
    std::function<void(int percent)> sayProgress_;
    DelayedCall progressWatch_;
    int percent_ = 0;
    double nextLookAt_ = 0;
    double excusedUntil_ = 0;
    double lastBehind_ = 0;
    double worthTelling_ = 5;
};

} // namespace tessarune
