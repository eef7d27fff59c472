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
/// Posted on the search's own queue after the index has taken in changed transcripts: earlier
/// searches may now find more or less. No object.
inline constexpr std::string_view searchIndexDidChange = "searchIndexDidChange";
} // namespace NotificationName

/// Finds recordings by their transcripts and translations. Main queue; the work is done on the
/// queue "Tessarune.TranscriptSearch".
///
/// The index is made at the first search. From then on, also in later runs, it follows the
/// catalog's notifications: new texts are found soon after they were saved, and nothing of deleted
/// ones stays. Work that is unfinished at the end of the program is done in a later run.
class TranscriptSearch {
  public:
    /// All of these must outlive it and its tasks.
    TranscriptSearch(Host& host, FileSystem& files, const RecordingCatalog& catalog,
                     TessaruneFileLogger& logger, NotificationCenter& notifications,
                     OpenSearchIndex open);
    ~TranscriptSearch();
    TranscriptSearch(const TranscriptSearch&) = delete;
    TranscriptSearch& operator=(const TranscriptSearch&) = delete;

    struct Found {
        std::vector<UUID> recordings; ///< in no order
        /// False while recordings are still being read, for some seconds after the first search.
        bool isComplete = true;
        std::size_t unreadable = 0; ///< recordings whose texts could not be read
        /// A later search replaced it while it was queued; it found nothing.
        bool wasSuperseded = false;
    };
    /// For a search as the user types: answers from the current index and continues reading
    /// afterwards.
    Task<Found> find(SearchQuery query);

    /// How many of the recordings that had to be read have been read.
    using Progress = std::function<void(const SearchIndexKeeper::State& state)>;
    /// For a search that must be complete. `progress` is called on the main queue.
    Task<void> bringUpToDate(Progress progress);

    /// Resumes when nothing of deleted recordings is left in the index, including the remainder of
    /// an earlier run.
    Task<void> eraseTraces();

    /// The surroundings of the first match in each recording, in its source or else in its
    /// translation.
    Task<std::vector<std::optional<SearchExcerpt>>> excerpts(SearchQuery query,
                                                             std::vector<UUID> recordings);

  private:
    struct Worker;

    Executor onQueue();

    Host& host_;
    NotificationCenter& notifications_;
    const std::shared_ptr<Worker> worker_;
    std::shared_ptr<SerialQueue> queue_; // made at the first use
    std::vector<NotificationCenter::Observation> observations_;
};

} // namespace tessarune
