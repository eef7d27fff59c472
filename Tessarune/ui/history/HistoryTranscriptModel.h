#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"
#include "Tessarune/ui/controls/ListedRows.h"

#include <QHash>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// A row of a transcript. Each text may be empty.
struct HistoryTranscriptRow {
    std::string time;
    std::string source;
    std::string translation;

    bool operator==(const HistoryTranscriptRow&) const = default;
};

/// The rows of one transcript, with their times where these are known. Main thread.
class HistoryTranscriptModel final : public ListedRows<HistoryTranscriptRow> {
    Q_OBJECT

  public:
    enum Role { TimeRole = Qt::UserRole, SourceRole, TranslationRole };

    /// Shows a document. Keeps the scroll position if the document is of the same recording.
    void show(const HistoryTranscriptExportDocument& document, bool isSameRecording);
    /// Whether times are shown beside the rows.
    bool isTimed() const { return isTimed_; }

    /// The row that shows a sentence of the recording; -1 if there is none. A saved bilingual text
    /// may be older than the sentences, and then some sentences match no row. Such sentences are
    /// spread evenly over the rows between the nearest rows that match.
    int rowOf(std::size_t sentence) const;
    /// The first and the last sentence that a row shows; `nullopt` if it shows none.
    std::optional<std::pair<std::size_t, std::size_t>> sentencesOf(int row) const;
    /// The row of a sentence; if the sentence has none, the row of the last earlier sentence that
    /// has one. Sentences after the last timed sentence have no known rows; the function assumes
    /// one row for each of them.
    Q_INVOKABLE int nearestRow(int sentence) const;

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    bool isTimed_ = false;
    std::vector<int> rowsOfSentences_; ///< by the sentence's index; -1: no row
};

} // namespace tessarune
