#include "Tessarune/translation/CommittedTranslationQueueRunner.h"

namespace tessarune {

Task<void> CommittedTranslationQueueRunner::run(CommittedTranslationQueue queue,
                                                std::stop_token stop) {
    while (queue.shouldContinue()) {
        const std::optional<CommittedTranslationUnit> unit = queue.nextPendingUnit();
        if (!unit)
            co_return;
        Task<bool> processing = queue.process(*unit, stop);
        const bool goesOn = co_await processing;
        if (!goesOn)
            co_return;
    }
}

void CommittedTranslationTaskCoordinator::start(LiveTranslationRuntime& runtime,
                                                CommittedTranslationQueue queue) {
    runtime.startCommittedTask([queue = std::move(queue)](std::stop_token stop) {
        return CommittedTranslationQueueRunner::run(queue, std::move(stop));
    });
}

} // namespace tessarune
