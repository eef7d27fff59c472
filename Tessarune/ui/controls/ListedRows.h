#pragma once

#include <QAbstractListModel>
#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tessarune {

/// A list model over a vector of rows that are compared by value. It announces changes as narrowly
/// as possible, so that a view keeps its scroll position and its delegates. Main thread.
template <typename Row>
class ListedRows : public QAbstractListModel {
  public:
    int rowCount(const QModelIndex& parent = {}) const final {
        return parent.isValid() ? 0 : count();
    }
    int count() const { return static_cast<int>(rows_.size()); }

  protected:
    const std::vector<Row>& rows() const { return rows_; }
    /// Null if there is no such row.
    const Row* at(int row) const {
        return row >= 0 && row < count() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
    }

    /// Replaces the rows by `now`. Keeps the rows at the beginning and at the end that `isSame`
    /// finds in both lists, and announces a change of each kept row whose content differs.
    template <typename IsSame>
    void show(std::vector<Row> now, IsSame isSame) {
        const auto first =
            std::mismatch(rows_.begin(), rows_.end(), now.begin(), now.end(), isSame);
        const int begin = static_cast<int>(first.first - rows_.begin());
        const auto last = std::mismatch(rows_.rbegin(), std::reverse_iterator(first.first),
                                        now.rbegin(), std::reverse_iterator(first.second), isSame);
        const int removedEnd = count() - static_cast<int>(last.first - rows_.rbegin());
        const int addedEnd =
            static_cast<int>(now.size()) - static_cast<int>(last.second - now.rbegin());
        if (removedEnd > begin) {
            beginRemoveRows({}, begin, removedEnd - 1);
            rows_.erase(rows_.begin() + begin, rows_.begin() + removedEnd);
            endRemoveRows();
        }
        if (addedEnd > begin) {
            beginInsertRows({}, begin, addedEnd - 1);
            rows_.insert(rows_.begin() + begin, now.begin() + begin, now.begin() + addedEnd);
            endInsertRows();
        }
        std::swap(rows_, now);
        announceDifferences(now);
    }

    /// Replaces all rows and resets the model.
    void reset(std::vector<Row> now) {
        beginResetModel();
        rows_ = std::move(now);
        endResetModel();
    }

    /// Changes an existing row by `act` and announces it.
    template <typename Act>
    void change(int row, Act act) {
        act(rows_[static_cast<std::size_t>(row)]);
        announce(row);
    }
    void announce(int row, const QList<int>& roles = {}) {
        if (at(row))
            Q_EMIT dataChanged(index(row), index(row), roles);
    }
    void announceAll(const QList<int>& roles) {
        if (!rows_.empty())
            Q_EMIT dataChanged(index(0), index(count() - 1), roles);
    }

  private:
    /// Announces each row that differs from `before`, which has the same number of rows.
    void announceDifferences(const std::vector<Row>& before) {
        const auto differs = [&](int row) {
            const auto position = static_cast<std::size_t>(row);
            return row < count() && !(before[position] == rows_[position]);
        };
        for (int row = 0; row < count(); ++row) {
            const int first = row;
            while (differs(row))
                ++row;
            if (row > first)
                Q_EMIT dataChanged(index(first), index(row - 1));
        }
    }

    std::vector<Row> rows_;
};

} // namespace tessarune
