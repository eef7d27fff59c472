#include "Tessarune/ui/history/HistoryTranscriptModel.h"

#include <QString>
#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

using TranscriptRow = HistoryTranscriptExportDocument::TranscriptRow;

/// Returns the row of each sentence as `HistoryTranscriptModel::rowOf` describes it.
std::vector<int> rowsOfSentences(const std::vector<TranscriptRow>& rows,
                                 std::size_t sentenceCount) {
    std::vector<int> found(sentenceCount, -1);
    std::size_t firstSentence = 0;
    std::size_t firstRow = 0;
    const auto share = [&](std::size_t endSentence, std::size_t endRow) {
        const std::size_t free = endRow - firstRow;
        for (std::size_t i = firstSentence; free > 0 && i < endSentence; ++i)
            found[i] = static_cast<int>(firstRow +
                                        (i - firstSentence) * free / (endSentence - firstSentence));
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const auto& sentence = rows[row].sentence;
        if (!sentence || *sentence < firstSentence)
            continue;
        share(*sentence, row);
        found[*sentence] = static_cast<int>(row);
        firstSentence = *sentence + 1;
        firstRow = row + 1;
    }
    share(sentenceCount, rows.size());
    return found;
}

} // namespace

void HistoryTranscriptModel::show(const HistoryTranscriptExportDocument& document,
                                  bool isSameRecording) {
    isTimed_ = !document.sentenceTimings.empty();
    std::vector<HistoryTranscriptRow> now;
    auto rows = document.transcriptRows();
    rowsOfSentences_ = rowsOfSentences(rows, document.sentenceTimings.size());
    for (auto& row : rows) {
        std::string time = document.timeOf(row).value_or("");
        now.push_back({std::move(time), std::move(row.source), std::move(row.translation)});
    }
    // Rows are identified by their position only.
    const auto anyRowIsSame = [](const auto&, const auto&) { return true; };
    if (isSameRecording)
        ListedRows::show(std::move(now), anyRowIsSame);
    else
        reset(std::move(now));
}

int HistoryTranscriptModel::rowOf(std::size_t sentence) const {
    return sentence < rowsOfSentences_.size() ? rowsOfSentences_[sentence] : -1;
}

std::optional<std::pair<std::size_t, std::size_t>>
HistoryTranscriptModel::sentencesOf(int row) const {
    const auto first = std::ranges::find(rowsOfSentences_, row);
    if (row < 0 || first == rowsOfSentences_.end())
        return std::nullopt;
    const auto end =
        std::find_if(first, rowsOfSentences_.end(), [row](int other) { return other != row; });
    const auto index = [&](auto place) {
        return static_cast<std::size_t>(place - rowsOfSentences_.begin());
    };
    return std::pair(index(first), index(end) - 1);
}

int HistoryTranscriptModel::nearestRow(int sentence) const {
    const int lastKnown = static_cast<int>(rowsOfSentences_.size()) - 1;
    const int beyond = std::max(0, sentence - lastKnown);
    int row = -1;
    for (int i = sentence - beyond; i >= 0 && row < 0; --i)
        row = rowsOfSentences_[static_cast<std::size_t>(i)];
    return std::clamp(row + beyond, 0, std::max(0, count() - 1));
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
