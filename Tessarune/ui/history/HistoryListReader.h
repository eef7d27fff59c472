#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"

#include <QString>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// Reads the entries of the history list from the disk. Confined to one queue, because reading
/// blocks; catalog and disk must outlive it.
class HistoryListReader {
  public:
    struct Entry {
        HistoryItem item;
        QString beginning; ///< of the transcript, on one line
        QString searched;  ///< note, date, time and beginning, folded for a search
    };
    using EntryPtr = std::shared_ptr<const Entry>;

    HistoryListReader(RecordingCatalog& catalog, FileSystem& files)
        : catalog_(catalog), files_(files) {}

    /// Returns the entries, the newest first. Once the text of a finished recording is known, its
    /// transcript is read again only after `forget`, and an unchanged entry is the same object as
    /// before.
    std::vector<EntryPtr> entries();
    /// Call when the transcript of this recording has changed.
    void forget(const UUID& id) { known_.erase(id); }

  private:
    QString beginningOf(const HistoryItem& item) const;

    RecordingCatalog& catalog_;
    FileSystem& files_;
    std::unordered_map<UUID, EntryPtr> known_; ///< the entries of the last reading
};

} // namespace tessarune
