#pragma once

#include "Tessarune/search/SearchIndex.h"
#include "Tessarune/search/TranscriptFiles.h"
#include "Tessarune/shell/TessaruneFileLogger.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace tessarune {

/// Opens the index file or creates it. Throws `SearchIndexFailed`.
using OpenSearchIndex =
    std::function<std::unique_ptr<SearchIndex>(const std::filesystem::path& path)>;

/// Keeps the index up to date with the transcripts, which are authoritative: adds, updates and
/// removes texts, and rebuilds a damaged index. If the index cannot be used, `find` searches the
/// transcripts themselves. Failures are logged, never thrown. One thread.
class SearchIndexKeeper {
  public:
    /// `files`, `catalog` and `logger` must outlive this.
    SearchIndexKeeper(FileSystem& files, const RecordingCatalog& catalog,
                      TessaruneFileLogger& logger, OpenSearchIndex open);
    ~SearchIndexKeeper();

    static std::filesystem::path indexPath(const TessarunePaths& paths);

    /// Compares the index with the transcripts. Deleted recordings are no longer found afterwards.
    void check();
    /// Makes the next check treat the recording as changed, whatever its stamp is.
    void noteChange(const UUID& id);
    /// Does some of the remaining work (reading, erasing), for a few hundredths of a second; false
    /// once none is left.
    bool step();
    /// Does some of the erasing only; false once none is left.
    bool eraseSome();

    struct State {
        /// How many of `all` were read, were unreadable, or were skipped after a failure.
        std::size_t done = 0;
        std::size_t all = 0; ///< recordings that the last check found outdated
        /// How many of `done` were unreadable. The index keeps their old texts, if any.
        std::size_t unreadable = 0;
        bool isComplete() const { return done == all; }
    };
    State state() const;

    /// The matching recordings among those indexed so far, in any order.
    std::vector<UUID> find(const SearchQuery& query);

  private:
    void discardIndex();
    void compare();
    void readSome();
    void giveUp();
    /// Calls `work` with the index. If the index is damaged, calls `work` once more with a new,
    /// empty one. False if the index cannot be used now.
    bool withIndex(const std::function<void(SearchIndex&)>& work);
    std::vector<UUID> findInFiles(const SearchQuery& query);
    void log(const char* event, const std::exception& error);

    FileSystem& files_;
    TessaruneFileLogger& logger_;
    TranscriptFiles transcripts_;
    std::filesystem::path path_;
    OpenSearchIndex open_;
    std::unique_ptr<SearchIndex> index_;
    bool wasChecked_ = false;   ///< the last check succeeded, and the index was not discarded since
    bool isBehind_ = false;     ///< updating failed; search the transcripts until the next check
    std::vector<UUID> changed_; ///< noted since the last check
    std::vector<IndexedTexts> outdated_; ///< not read yet; only their ids and stamps are set
    std::size_t outdatedAtCheck_ = 0;
    std::size_t unreadable_ = 0; ///< since the last check
};

} // namespace tessarune
