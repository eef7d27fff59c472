#include "Tessarune/ui/history/HistoryTranscriptModel.h"

#include <QString>
#include <utility>

namespace tessarune {

void HistoryTranscriptModel::show(HistoryTranscriptExportDocument document) {
    beginResetModel();
    document_ = std::move(document);
    rows_ = document_.transcriptRows();
    endResetModel();
}

int HistoryTranscriptModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant HistoryTranscriptModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    switch (role) {
    case TimeRole:
        return QString::fromStdString(document_.timeOf(rows_[row]).value_or(""));
    case SourceRole:
        return QString::fromStdString(rows_[row].source);
    case TranslationRole:
        return QString::fromStdString(rows_[row].translation);
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryTranscriptModel::roleNames() const {
    return {{TimeRole, "time"}, {SourceRole, "source"}, {TranslationRole, "translation"}};
}

} // namespace tessarune
