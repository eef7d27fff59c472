#pragma once

#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>

namespace tessarune {

/// Lets the application end only when the running session has been saved, or after five seconds.
/// Main queue. Host and logger must outlive what it starts; the store may go away earlier.
class TessaruneListeningLifecycleHandler {
  public:
    enum class TerminateReply { now, later };
    static constexpr double longestWaitSeconds = 5.0;

    /// `replyToApplicationShouldTerminate` is called once for each `later`.
    TessaruneListeningLifecycleHandler(Host& host, TessaruneFileLogger& logger,
                                       std::weak_ptr<LiveTranscriptStore> store,
                                       std::function<void()> replyToApplicationShouldTerminate);

    TerminateReply applicationShouldTerminate();
    /// The last resort: asks for a stop, which nobody waits for.
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
