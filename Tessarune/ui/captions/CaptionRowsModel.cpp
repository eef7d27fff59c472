#include "Tessarune/ui/captions/CaptionRowsModel.h"

#include <utility>

namespace tessarune {

void CaptionRowsModel::update(CaptionStageRows rows) {
    const int before = rowCount();
    const int now = static_cast<int>(rows.size());
    const int primaryBefore = firstPrimary();
    const std::vector<std::size_t> changed = rows.changedSince(rows_);
    if (now > before)
        beginInsertRows({}, before, now - 1);
    else if (now < before)
        beginRemoveRows({}, now, before - 1);
    rows_ = std::move(rows);
    if (now > before)
        endInsertRows();
    else if (now < before)
        endRemoveRows();
    for (auto first = changed.begin(); first != changed.end();) {
        auto last = first;
        while (last + 1 != changed.end() && *(last + 1) == *last + 1)
            ++last;
        Q_EMIT dataChanged(index(static_cast<int>(*first)), index(static_cast<int>(*last)));
        first = last + 1;
    }
    if (firstPrimary() != primaryBefore)
        Q_EMIT firstPrimaryChanged();
}

int CaptionRowsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant CaptionRowsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const CaptionStageRow row = rows_.row(static_cast<std::size_t>(index.row()));
    switch (role) {
    case SourceRole:
        return QString::fromStdString(row.source);
    case TranslationRole:
        return QString::fromStdString(row.translation);
    case GhostRole:
        return row.isGhost;
    case GrowingRole:
        return row.isGrowing;
    default:
        return {};
    }
}

QHash<int, QByteArray> CaptionRowsModel::roleNames() const {
    return {{SourceRole, "source"},
            {TranslationRole, "translation"},
            {GhostRole, "ghost"},
            {GrowingRole, "growing"}};
}

} // namespace tessarune
