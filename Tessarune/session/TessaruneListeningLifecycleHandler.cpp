#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"

#include <utility>

namespace tessarune {

TessaruneListeningLifecycleHandler::TessaruneListeningLifecycleHandler(
    Host& host, TessaruneFileLogger& logger, std::weak_ptr<LiveTranscriptStore> store,
    std::function<void()> replyToApplicationShouldTerminate)
    : host_(host),
      logger_(logger),
      store_(std::move(store)),
      reply_(std::move(replyToApplicationShouldTerminate)) {}

TessaruneListeningLifecycleHandler::TerminateReply
TessaruneListeningLifecycleHandler::applicationShouldTerminate() {
    const auto store = store_.lock();
    if (!store || (!*store->view().isListening && !store->isStopping()))
        return TerminateReply::now;
    logger_.event("app.shouldTerminate.draining", {{"isListening", *store->view().isListening},
                                                   {"hasStopTask", store->isStopping()}});
    store->stopListening(LiveSessionControlTrigger::applicationShouldTerminate());
    spawn(Executor::main(host_), waitForStop(host_, logger_, store_, reply_));
    return TerminateReply::later;
}

Task<void> TessaruneListeningLifecycleHandler::waitForStop(Host& host, TessaruneFileLogger& logger,
                                                           std::weak_ptr<LiveTranscriptStore> store,
                                                           std::function<void()> reply) {
    constexpr double secondsBetweenChecks = 0.05;
    const double deadline = host.now() + longestWaitSeconds;
    const auto isStopping = [&store] {
        const auto alive = store.lock();
        return alive && alive->isStopping();
    };
    while (isStopping() && host.now() < deadline) {
        Task<bool> sleeping = sleep(Executor::main(host), secondsBetweenChecks);
        co_await sleeping;
    }
    logger.event("app.shouldTerminate.done", {{"completed", host.now() < deadline}});
    if (reply)
        reply();
}

void TessaruneListeningLifecycleHandler::handleApplicationWillTerminate() {
    logger_.event("app.willTerminate");
    host_.post([weak = store_] {
        if (const auto store = weak.lock())
            store->stopListening(LiveSessionControlTrigger::applicationWillTerminate());
    });
}

} // namespace tessarune
