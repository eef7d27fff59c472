#include "Tessarune/ui/captions/CaptionRowsModel.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

/// The number of characters in the rows from `first` up to but not including `end`, with a space
/// after each row.
std::size_t charactersOf(const CaptionStageRows& rows, std::size_t first, std::size_t end) {
    std::size_t count = 0;
    for (std::size_t i = first; i < end; ++i)
        count += Text::characters(rows.row(i).source).size() + 1;
    return count;
}

} // namespace

/// Returns how many characters of the growing row of `next` are already visible in other rows.
/// Characters are already visible if part of an open row settles and the rest becomes the next row,
/// or if a sentence opens again and absorbs the rows after it.
std::size_t CaptionRowsModel::revealedIn(const CaptionStageRows& next) const {
    const std::size_t before = rows_.growing();
    const std::size_t now = next.growing();
    const std::size_t first = std::min(before, now);
    if (now == next.size() || first < rows_.settledSize())
        return 0;
    std::size_t shown = charactersOf(rows_, first, before);
    if (before < rows_.size())
        shown += std::min(revealed_, Text::characters(rows_.row(before).source).size());
    const std::size_t elsewhere = charactersOf(next, first, now);
    return shown - std::min(shown, elsewhere);
}

void CaptionRowsModel::update(CaptionStageRows rows) {
    const int before = rowCount();
    const int now = static_cast<int>(rows.size());
    const int primaryBefore = firstPrimary();
    const std::vector<std::size_t> changed = rows.changedSince(rows_);
    const bool sameRowGrows = rows.growing() == rows_.growing() && rows.growing() < rows.size() &&
                              rows_.growing() < rows_.size();
    if (!sameRowGrows) // if the same row grows, the view may still take `alreadyRevealed_`
        alreadyRevealed_ = revealed_ = revealedIn(rows);
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
