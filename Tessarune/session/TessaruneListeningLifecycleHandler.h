#pragma once

#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>

namespace tessarune {

/// Delays the end of the application until the running session is saved, for at most five seconds.
/// Main queue. Host and logger must outlive its tasks; the store may be destroyed earlier.
class TessaruneListeningLifecycleHandler {
  public:
    enum class TerminateReply { now, later };
    static constexpr double longestWaitSeconds = 5.0;

    /// `replyToApplicationShouldTerminate` is called once for each `later`.
    TessaruneListeningLifecycleHandler(Host& host, TessaruneFileLogger& logger,
                                       std::weak_ptr<LiveTranscriptStore> store,
                                       std::function<void()> replyToApplicationShouldTerminate);

    TerminateReply applicationShouldTerminate();
    /// The last resort: requests a stop without waiting for it.
    void handleApplicationWillTerminate();

  private:
    static Task<void> waitForStop(Host& host, TessaruneFileLogger& logger,
                                  std::weak_ptr<LiveTranscriptStore> store,
                                  std::function<void()> reply);

    Host& host_;
    TessaruneFileLogger& logger_;
    std::weak_ptr<LiveTranscriptStore> store_;
    std::function<void()> reply_;
};

} // namespace tessarune
