#pragma once

#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <functional>
#include <optional>
#include <stop_token>

namespace tessarune {

/// What a run of committed translations asks of the session. Main queue.
struct CommittedTranslationQueue {
    std::function<bool()> shouldContinue;
    std::function<std::optional<CommittedTranslationUnit>()> nextPendingUnit;
    /// True when the queue may go on.
    std::function<Task<bool>(CommittedTranslationUnit unit, std::stop_token stop)> process;
};

/// Works through the units that wait, one after the other, and ends with them: the next commit
/// starts a new run.
namespace CommittedTranslationQueueRunner {
Task<void> run(CommittedTranslationQueue queue, std::stop_token stop);
}

/// Makes such a run the runtime's committed task, unless there is one.
namespace CommittedTranslationTaskCoordinator {
void start(LiveTranslationRuntime& runtime, CommittedTranslationQueue queue);
}

} // namespace tessarune
