#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"

#include <QString>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// Reads what the history list shows from the disk. Confined to one queue, since reading blocks;
/// catalog and disk outlive it.
class HistoryListReader {
  public:
    struct Entry {
        HistoryItem item;
        QString beginning; ///< of its transcript, on one line
        QString searched;  ///< note, date and beginning, folded for a search

        bool operator==(const Entry&) const = default;
    };
    using EntryPtr = std::shared_ptr<const Entry>;

    HistoryListReader(RecordingCatalog& catalog, FileSystem& files)
        : catalog_(catalog), files_(files) {}

    /// Newest first. Transcripts are read only once, and an unchanged entry is the same object as
    /// before.
    std::vector<EntryPtr> entries();
    /// Call when this transcript has changed.
    void forget(const UUID& id) { known_.erase(id); }

  private:
    QString beginningOf(const HistoryItem& item) const;

    RecordingCatalog& catalog_;
    FileSystem& files_;
    std::unordered_map<UUID, EntryPtr> known_; ///< as they were last
};

} // namespace tessarune
