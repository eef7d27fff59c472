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

/// Keeps the index in agreement with the transcripts, which are the truth: what is missing or old
/// in it is read again, what is gone is taken out, and a damaged one is made anew without a word.
/// Where there can be no index, the transcripts themselves are searched. One thread; never throws.
class SearchIndexKeeper {
  public:
    /// Files, catalog and logger must outlive it.
    SearchIndexKeeper(FileSystem& files, const RecordingCatalog& catalog,
                      TessaruneFileLogger& logger, OpenSearchIndex open);
    ~SearchIndexKeeper();

    static std::filesystem::path indexPath(const TessarunePaths& paths);

    /// Compares the index with the transcripts. What is gone is not found from then on.
    void check();
    /// Counts the recording as changed at the next check, whatever its stamp is.
    void noteChange(const UUID& id);
    /// Does a part of what is left to do, some hundredths of a second of it; false once there is
    /// nothing.
    bool step();
    /// Of that, erases a part of what was deleted; false once nothing of it is left.
    bool eraseSome();

    struct State {
        std::size_t done = 0; ///< of the recordings that had to be read since the last check
        std::size_t all = 0;
        bool isComplete() const { return done == all; }
    };
    State state() const;

    /// The recordings that match, as far as they are in the index, in no order.
    std::vector<UUID> find(const SearchQuery& query);

  private:
    void discardIndex();
    void compare();
    void readSome();
    void giveUp();
    /// Does it once more over a new index if this one is damaged. False if it cannot be done now.
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
    bool isBehind_ = false; ///< and cannot be brought up to date now
    std::vector<UUID> changed_;
    std::vector<IndexedTexts> outdated_; ///< to be read; only ids and stamps
    std::size_t outdatedAtCheck_ = 0;
};

} // namespace tessarune
