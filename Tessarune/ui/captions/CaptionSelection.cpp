#include "Tessarune/ui/captions/CaptionSelection.h"

#include <QFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>
#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// A text laid out in the same lines as the item that draws it.
class DrawnLines {
  public:
    DrawnLines(const QString& text, const QQuickItem& item)
        : layout_(text, item.property("font").value<QFont>()) {
        const double lineHeight = item.property("lineHeight").toDouble();
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout_.setTextOption(option);
        layout_.beginLayout();
        double top = 0;
        for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
            line.setLineWidth(item.width());
            line.setPosition({0, top});
            top += line.height() * lineHeight;
        }
        layout_.endLayout();
    }

    qsizetype characterAt(QPointF point) const {
        for (int i = layout_.lineCount() - 1; i >= 0; --i) {
            const QTextLine line = layout_.lineAt(i);
            if (point.y() >= line.y() || i == 0)
                return line.xToCursor(point.x());
        }
        return 0;
    }
    QVariantList rects(qsizetype from, qsizetype to) const {
        QVariantList all;
        for (int i = 0; i < layout_.lineCount(); ++i) {
            const QTextLine line = layout_.lineAt(i);
            const int first = std::max<int>(line.textStart(), static_cast<int>(from));
            const int last =
                std::min<int>(line.textStart() + line.textLength(), static_cast<int>(to));
            if (first >= last)
                continue;
            const double left = line.cursorToX(first);
            all << QRectF(left, line.y(), line.cursorToX(last) - left, line.height());
        }
        return all;
    }

  private:
    QTextLayout layout_;
};

QQuickItem* itemOf(const QQuickItem& row, bool isTranslation) {
    return row.property(isTranslation ? "translationItem" : "sourceItem").value<QQuickItem*>();
}

} // namespace

CaptionSelection::CaptionSelection() {
    connect(this, &CaptionSelection::attachedChanged, this, &CaptionSelection::followRows);
}

/// Clears the selection when its row numbers no longer refer to the same texts.
void CaptionSelection::followRows() {
    const auto once = Qt::UniqueConnection;
    if (rows_) {
        connect(rows_, &QAbstractItemModel::rowsRemoved, this, &CaptionSelection::rowsRemoved,
                once);
        connect(rows_, &QAbstractItemModel::modelReset, this, &CaptionSelection::clear, once);
    }
    if (stage_)
        connect(stage_, &CaptionStageModel::layoutChanged, this, &CaptionSelection::clear, once);
}

void CaptionSelection::rowsRemoved() {
    if (anchor_ && std::max(anchor_->row, end_.row) >= rows_->rowCount())
        clear();
}

void CaptionSelection::setList(QQuickItem* list) {
    list_ = list;
    Q_EMIT attachedChanged();
}

bool CaptionSelection::isTranslation(int part) const {
    return (part == 1) != (stage_->isBilingual() && stage_->swaps());
}

QString CaptionSelection::textOf(int row, int part) const {
    return rows_
        ->data(rows_->index(row), isTranslation(part) ? CaptionRowsModel::TranslationRole
                                                      : CaptionRowsModel::SourceRole)
        .toString();
}

std::optional<CaptionSelection::Place> CaptionSelection::placeAt(QPointF point) const {
    if (!list_ || !rows_ || !stage_ || rows_->rowCount() == 0)
        return std::nullopt;
    const double contentY = list_->property("contentY").toDouble();
    int row = -1;
    QMetaObject::invokeMethod(list_, "indexAt", Q_RETURN_ARG(int, row), Q_ARG(double, 1),
                              Q_ARG(double, point.y() + contentY));
    if (row < 0) // above the first row, or below the last
        row = point.y() < list_->height() / 2 ? 0 : rows_->rowCount() - 1;
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list_, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                              Q_ARG(int, row));
    if (!item)
        return std::nullopt;
    for (const int part : {1, 0}) {
        const QString text = textOf(row, part);
        const QQuickItem* const drawn = itemOf(*item, isTranslation(part));
        if (text.isEmpty() || !drawn)
            continue;
        const QPointF inText = drawn->mapFromItem(list_, point);
        if (inText.y() >= 0 || part == 0 || textOf(row, 0).isEmpty())
            return Place{row, part, DrawnLines(text, *drawn).characterAt(inText)};
    }
    return std::nullopt;
}

void CaptionSelection::select(Place anchor, Place end) {
    anchor_ = anchor;
    end_ = end;
    ++revision_;
    Q_EMIT changed();
}

void CaptionSelection::begin(double x, double y) {
    if (const auto place = placeAt({x, y}))
        select(*place, *place);
}

void CaptionSelection::extend(double x, double y) {
    const auto place = placeAt({x, y});
    if (place && anchor_ && *place != end_)
        select(*anchor_, *place);
}

void CaptionSelection::selectWord(double x, double y) {
    auto place = placeAt({x, y});
    if (!place)
        return;
    const QString text = textOf(place->row, place->part);
    QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
    Place end = *place;
    words.setPosition(place->character);
    if (!words.isAtBoundary())
        place->character = std::max<qsizetype>(words.toPreviousBoundary(), 0);
    words.setPosition(place->character);
    const qsizetype next = words.toNextBoundary();
    end.character = next < 0 ? text.size() : next;
    select(*place, end);
}

void CaptionSelection::selectAll() {
    if (!rows_ || !stage_ || rows_->rowCount() == 0)
        return;
    const int last = rows_->rowCount() - 1;
    select({0, 0, 0}, {last, 1, textOf(last, 1).size()});
}

void CaptionSelection::clear() {
    if (!std::exchange(anchor_, std::nullopt))
        return;
    ++revision_;
    Q_EMIT changed();
}

CaptionSelection::Range CaptionSelection::rangeIn(int row, int part) const {
    if (!anchor_)
        return {};
    const auto [first, last] = std::minmax(*anchor_, end_);
    const std::pair here(row, part);
    const std::pair firstText(first.row, first.part);
    const std::pair lastText(last.row, last.part);
    if (here < firstText || here > lastText)
        return {};
    const qsizetype size = textOf(row, part).size();
    return {here == firstText ? std::min(first.character, size) : 0,
            here == lastText ? std::min(last.character, size) : size};
}

QString CaptionSelection::text() const {
    QStringList texts;
    if (!anchor_)
        return {};
    const auto [first, last] = std::minmax(*anchor_, end_);
    for (int row = first.row; row <= std::min(last.row, rows_->rowCount() - 1); ++row) {
        for (const int part : {0, 1}) {
            const Range range = rangeIn(row, part);
            if (range.to > range.from)
                texts << textOf(row, part).mid(range.from, range.to - range.from);
        }
    }
    return texts.join(QLatin1Char('\n'));
}

QVariantList CaptionSelection::rects(int row, bool isTranslation, QQuickItem* item,
                                     double /*width*/, int /*revision*/) const {
    if (!anchor_ || !item)
        return {};
    const int part = isTranslation == this->isTranslation(1) ? 1 : 0;
    const Range range = rangeIn(row, part);
    if (range.to <= range.from)
        return {};
    return DrawnLines(textOf(row, part), *item).rects(range.from, range.to);
}

} // namespace tessarune
