#include "Tessarune/search/TranscriptSearch.h"

#include "TessaruneCore/host/RunOn.h"

#include <atomic>
#include <utility>

namespace tessarune {

/// Used only on the queue, except for the atomics. Queued blocks share its ownership, so it may
/// outlive the search.
struct TranscriptSearch::Worker {
    Worker(FileSystem& files, const RecordingCatalog& catalog, TessaruneFileLogger& logger,
           OpenSearchIndex open, NotificationCenter& notificationCenter)
        : keeper(files, catalog, logger, std::move(open)),
          transcripts(files, catalog),
          notifications(notificationCenter) {}

    SearchIndexKeeper keeper;
    TranscriptFiles transcripts;
    NotificationCenter& notifications;
    bool isStepQueued = false;
    std::atomic<bool> isStopping = false;
    std::atomic<int> newestSearch = 0;
    std::atomic<int> checksQueued = 0;

    /// Queues one step after the other, so that other work can run between them.
    static void queueStep(const std::shared_ptr<Worker>& worker,
                          const std::weak_ptr<SerialQueue>& queue) {
        const auto strong = queue.lock();
        if (!strong || worker->isStepQueued || worker->isStopping)
            return;
        worker->isStepQueued = true;
        strong->async([worker, queue] {
            worker->isStepQueued = false;
            if (worker->isStopping)
                return;
            const bool wasComplete = worker->keeper.state().isComplete();
            const bool hasMore = worker->keeper.step();
            if (!wasComplete && worker->keeper.state().isComplete())
                worker->notifications.post(NotificationName::searchIndexDidChange);
            if (hasMore)
                queueStep(worker, queue);
        });
    }

    /// Queues a check. Of several queued checks only the last one runs.
    static void check(const std::shared_ptr<Worker>& worker,
                      const std::shared_ptr<SerialQueue>& queue, std::optional<UUID> changed) {
        ++worker->checksQueued;
        queue->async([worker, weakQueue = std::weak_ptr(queue), changed] {
            if (changed)
                worker->keeper.noteChange(*changed);
            if (--worker->checksQueued > 0)
                return;
            worker->keeper.check();
            queueStep(worker, weakQueue);
        });
    }
};

TranscriptSearch::TranscriptSearch(Host& host, FileSystem& files, const RecordingCatalog& catalog,
                                   TessaruneFileLogger& logger, NotificationCenter& notifications,
                                   OpenSearchIndex open)
    : host_(host),
      notifications_(notifications),
      worker_(std::make_shared<Worker>(files, catalog, logger, std::move(open), notifications)) {
    if (files.exists(SearchIndexKeeper::indexPath(catalog.paths())))
        workerQueue();
}

TranscriptSearch::~TranscriptSearch() {
    worker_->isStopping = true;
    if (queue_)
        queue_->sync([] {}); // wait: queued work uses objects that the caller may destroy next
}

Executor TranscriptSearch::workerQueue() {
    if (!queue_) {
        queue_ = host_.serialQueue("Tessarune.TranscriptSearch", QueuePriority::standard);
        const auto observe = [this](std::string_view name) {
            observations_.push_back(notifications_.observe(
                name, [worker = worker_, queue = queue_](const NotificationObject& object) {
                    const auto* id = std::get_if<UUID>(&object);
                    Worker::check(worker, queue, id ? std::optional(*id) : std::nullopt);
                }));
        };
        observe(NotificationName::recordingCatalogDidChange);
        observe(NotificationName::recordingTranscriptDidUpdate);
    }
    return Executor::queue(host_, queue_);
}

Task<TranscriptSearch::Found> TranscriptSearch::find(SearchQuery query) {
    const auto worker = worker_;
    const Executor executor = workerQueue();
    const std::weak_ptr<SerialQueue> queue = queue_;
    const int number = ++worker->newestSearch;
    co_return co_await runOn(executor, [&] {
        Found found;
        found.wasSuperseded = worker->newestSearch != number;
        if (found.wasSuperseded)
            return found;
        found.recordings = worker->keeper.find(query);
        const SearchIndexKeeper::State state = worker->keeper.state();
        found.isComplete = state.isComplete();
        found.unreadable = state.unreadable;
        Worker::queueStep(worker, queue);
        return found;
    });
}

Task<void> TranscriptSearch::bringUpToDate(Progress progress) {
    const auto worker = worker_;
    const Executor executor = workerQueue();
    co_await runOn(executor, [&] { worker->keeper.check(); });
    SearchIndexKeeper::State state;
    for (bool hasMore = true; hasMore;) {
        hasMore = co_await runOn(executor, [&] {
            const bool hasMoreSteps = worker->keeper.step();
            state = worker->keeper.state();
            return hasMoreSteps && !state.isComplete();
        });
        if (progress)
            progress(state);
    }
}

Task<void> TranscriptSearch::eraseTraces() {
    if (!queue_)
        co_return; // the queue is missing only if there is no index
    const auto worker = worker_;
    const Executor executor = workerQueue();
    co_await runOn(executor, [&] { worker->keeper.check(); });
    for (bool hasMore = true; hasMore;)
        hasMore = co_await runOn(executor,
                                 [&] { return !worker->isStopping && worker->keeper.eraseSome(); });
}

Task<std::vector<std::optional<SearchExcerpt>>>
TranscriptSearch::excerpts(SearchQuery query, std::vector<UUID> recordings) {
    const auto worker = worker_;
    const Executor executor = workerQueue();
    co_return co_await runOn(executor, [&] {
        std::vector<std::optional<SearchExcerpt>> found;
        found.reserve(recordings.size());
        for (const UUID& id : recordings) {
            auto& excerpt = found.emplace_back();
            const auto texts = worker->transcripts.texts(id);
            if (texts)
                excerpt = SearchExcerpt::of(query, texts->source);
            if (texts && !excerpt)
                excerpt = SearchExcerpt::of(query, texts->translation);
        }
        return found;
    });
}

} // namespace tessarune
