#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"
#include "Tessarune/ui/controls/ListedRows.h"

#include <QHash>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// A sentence for reading. Texts may be empty.
struct HistoryTranscriptRow {
    std::string time;
    std::string source;
    std::string translation;

    bool operator==(const HistoryTranscriptRow&) const = default;
};

/// The rows of one transcript, each with its time. Main thread.
class HistoryTranscriptModel final : public ListedRows<HistoryTranscriptRow> {
    Q_OBJECT

  public:
    enum Role { TimeRole = Qt::UserRole, SourceRole, TranslationRole };

    /// Another text of the same recording keeps the scroll position.
    void show(const HistoryTranscriptExportDocument& document, bool isSameRecording);
    /// Whether times are shown beside the rows.
    bool isTimed() const { return isTimed_; }

    /// The row in which a sentence of the recording is read; -1: there is none. A translation may
    /// be older than the sentences: one that it does not have is read where its neighbours leave
    /// room.
    int rowOf(std::size_t sentence) const;
    /// The first and the last sentence that are read in a row.
    std::optional<std::pair<std::size_t, std::size_t>> sentencesOf(int row) const;
    /// As `rowOf`, or the row before it.
    Q_INVOKABLE int nearestRow(int sentence) const;

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    bool isTimed_ = false;
    std::vector<int> rowsOfSentences_;
};

} // namespace tessarune
