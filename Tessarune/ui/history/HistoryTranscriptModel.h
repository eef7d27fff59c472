#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"
#include "Tessarune/ui/controls/ListedRows.h"

#include <QHash>
#include <string>

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

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    bool isTimed_ = false;
};

} // namespace tessarune
