#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <QAbstractListModel>
#include <QHash>
#include <vector>

namespace tessarune {

/// The rows of one transcript, each with its time. Main thread.
class HistoryTranscriptModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum Role { TimeRole = Qt::UserRole, SourceRole, TranslationRole };

    void show(HistoryTranscriptExportDocument document);
    /// A time stands beside the rows.
    bool isTimed() const { return !document_.sentenceTimings.empty(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    HistoryTranscriptExportDocument document_;
    std::vector<HistoryTranscriptExportDocument::TranscriptRow> rows_;
};

} // namespace tessarune
