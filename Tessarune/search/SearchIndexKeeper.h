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

/// Opens the index file or makes it. Throws SearchIndexFailed.
using OpenSearchIndex =
    std::function<std::unique_ptr<SearchIndex>(const std::filesystem::path& path)>;

/// Keeps the index in agreement with the transcripts, which are authoritative: adds missing and
/// updates outdated ones, removes deleted ones, and silently rebuilds a damaged index. Without an
/// index, the transcripts themselves are searched. One thread; never throws.
class SearchIndexKeeper {
  public:
    /// Files, catalog and logger must outlive it.
    SearchIndexKeeper(FileSystem& files, const RecordingCatalog& catalog,
                      TessaruneFileLogger& logger, OpenSearchIndex open);
    ~SearchIndexKeeper();

    static std::filesystem::path indexPath(const TessarunePaths& paths);

    /// Compares the index with the transcripts. Deleted recordings are not found from then on.
    void check();
    /// Treats the recording as changed at the next check, whatever its stamp is.
    void noteChange(const UUID& id);
    /// Does a part of the remaining work, a few hundredths of a second; false once there is none.
    bool step();
    /// The same, for erasing deleted texts only; false once nothing of them is left.
    bool eraseSome();

    struct State {
        std::size_t done = 0; ///< of the recordings that had to be read since the last check
        std::size_t all = 0;
        std::size_t unreadable = 0; ///< of these; the index has their former texts, if any
        bool isComplete() const { return done == all; }
    };
    State state() const;

    /// The matching recordings among the indexed ones, in no order.
    std::vector<UUID> find(const SearchQuery& query);

  private:
    void discardIndex();
    void compare();
    void readSome();
    void giveUp();
    /// Retries once with a rebuilt index if this one is damaged. False if it cannot be done now.
    bool overIndex(const std::function<void(SearchIndex&)>& work);
    std::vector<UUID> findInFiles(const SearchQuery& query);
    void log(const char* event, const std::exception& error);

    FileSystem& files_;
    TessaruneFileLogger& logger_;
    TranscriptFiles transcripts_;
    std::filesystem::path path_;
    OpenSearchIndex open_;
    std::unique_ptr<SearchIndex> index_;
    bool wasChecked_ = false;
    bool isBehind_ = false; ///< and cannot be updated now
    std::vector<UUID> changed_;
    std::vector<IndexedTexts> outdated_; ///< to be read; only ids and stamps
    std::size_t outdatedAtCheck_ = 0;
    std::size_t unreadable_ = 0; ///< since the last check
};

} // namespace tessarune
