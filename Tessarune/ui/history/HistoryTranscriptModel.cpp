#include "Tessarune/ui/history/HistoryTranscriptModel.h"

#include <QString>
#include <utility>
#include <vector>

namespace tessarune {

void HistoryTranscriptModel::show(const HistoryTranscriptExportDocument& document,
                                  bool isSameRecording) {
    isTimed_ = !document.sentenceTimings.empty();
    std::vector<HistoryTranscriptRow> now;
    for (auto& row : document.transcriptRows()) {
        std::string time = document.timeOf(row).value_or("");
        now.push_back({std::move(time), std::move(row.source), std::move(row.translation)});
    }
    const auto isSamePlace = [](const auto&, const auto&) { return true; };
    if (isSameRecording)
        ListedRows::show(std::move(now), isSamePlace);
    else
        reset(std::move(now));
}

QVariant HistoryTranscriptModel::data(const QModelIndex& index, int role) const {
    const HistoryTranscriptRow* const row = at(index.row());
    if (!row)
        return {};
    switch (role) {
    case TimeRole:
        return QString::fromStdString(row->time);
    case SourceRole:
        return QString::fromStdString(row->source);
    case TranslationRole:
        return QString::fromStdString(row->translation);
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryTranscriptModel::roleNames() const {
    return {{TimeRole, "time"}, {SourceRole, "source"}, {TranslationRole, "translation"}};
}

} // namespace tessarune
