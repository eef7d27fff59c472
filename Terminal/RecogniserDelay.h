#pragma once

#include "Tessarune/session/LiveSystemAudioTranscriber.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <string>

namespace tessarune {

/// How far the recogniser of a session is behind its sound. Main queue, but for `heardSeconds`; the
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

    /// Seconds of sound that it has worked through. Any thread.
    double heardSeconds() const;
    double secondsBehind() const;

    /// From now on says a delay of some seconds, and again each time that it has doubled. Time in
    /// which the program or the computer stood still is no delay of the recogniser.
    void watch(std::function<void(const std::string&)> say);
    void endWatch() { watch_.cancel(); }

    /// Says how much of `duration` seconds it has worked through, at each new per cent.
    void watchProgress(double duration, std::function<void(int percent)> say);
    void endProgress() { progressWatch_.cancel(); }

    /// Goes on when it has caught up, when `isCancelled` says so, or when it gets no further.
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
