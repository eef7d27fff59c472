#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"

#include <QString>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// What the history list shows, as the disk has it. Confined to one queue, since reading waits for
/// the disk; catalog and disk outlive it.
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

    /// Newest first. Transcripts that were read before are not read again, and an entry that did
    /// not change is the same object.
    std::vector<EntryPtr> entries();
    /// This transcript has changed.
    void forget(const UUID& id) { known_.erase(id); }

  private:
    QString beginningOf(const HistoryItem& item) const;

    RecordingCatalog& catalog_;
    FileSystem& files_;
    std::unordered_map<UUID, EntryPtr> known_; ///< as they were last
};

} // namespace tessarune
