#pragma once

#include "Tessarune/search/SearchIndexKeeper.h"
#include "Tessarune/search/SearchQuery.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tessarune {

namespace NotificationName {
/// Posted on the search's own queue after changed transcripts were indexed: repeating a search may
/// now find more or less. No object.
inline constexpr std::string_view searchIndexDidChange = "searchIndexDidChange";
} // namespace NotificationName

/// Finds recordings by their transcripts and translations. Main queue; the work is done on the
/// queue "Tessarune.TranscriptSearch".
///
/// The first search creates the index. From then on, also in later runs of the program, the
/// catalog's notifications update it: new texts are found soon after they were saved, and deleted
/// ones are erased. Work that is unfinished when the program ends is done in a later run.
class TranscriptSearch {
  public:
    /// All references must outlive this and its tasks.
    TranscriptSearch(Host& host, FileSystem& files, const RecordingCatalog& catalog,
                     TessaruneFileLogger& logger, NotificationCenter& notifications,
                     OpenSearchIndex open);
    ~TranscriptSearch();
    TranscriptSearch(const TranscriptSearch&) = delete;
    TranscriptSearch& operator=(const TranscriptSearch&) = delete;

    struct Found {
        std::vector<UUID> recordings; ///< in any order
        /// False while recordings are still being read, for example for some seconds after the
        /// first search.
        bool isComplete = true;
        std::size_t unreadable = 0; ///< recordings whose texts could not be read
        /// A later search was started while this one was queued; `recordings` is empty.
        bool wasSuperseded = false;
    };
    /// For a search as the user types: answers from the current index and then continues indexing.
    Task<Found> find(SearchQuery query);

    /// Called after each step of `bringUpToDate`.
    using Progress = std::function<void(const SearchIndexKeeper::State& state)>;
    /// Completes the index, for a search that must be complete. Calls `progress` on the main queue.
    Task<void> bringUpToDate(Progress progress);

    /// Erases all texts of deleted recordings from the index, including those deleted in an earlier
    /// run.
    Task<void> eraseTraces();

    /// For each recording, the surroundings of the first match in its source; if the source has
    /// none, in its translation.
    Task<std::vector<std::optional<SearchExcerpt>>> excerpts(SearchQuery query,
                                                             std::vector<UUID> recordings);

  private:
    struct Worker;

    Executor workerQueue();

    Host& host_;
    NotificationCenter& notifications_;
    const std::shared_ptr<Worker> worker_;
    std::shared_ptr<SerialQueue> queue_; // created on first use
    std::vector<NotificationCenter::Observation> observations_;
};

} // namespace tessarune
