#pragma once

#include "Tessarune/display/CaptionStageRows.h"

#include <QAbstractListModel>
#include <cstddef>
#include <utility>

namespace tessarune {

/// The rows of one caption list for Qt Quick. Updates are announced as the smallest change: a new
/// row as an insertion, a new translation as a change of its row. Main thread.
class CaptionRowsModel final : public QAbstractListModel {
    Q_OBJECT
    /// The first row of the current captions; the rows above it are older.
    Q_PROPERTY(int firstPrimary READ firstPrimary NOTIFY firstPrimaryChanged)

  public:
    enum Role { SourceRole = Qt::UserRole, TranslationRole, GhostRole, GrowingRole };

    void update(CaptionStageRows rows);
    int firstPrimary() const { return static_cast<int>(rows_.firstPrimary()); }

    /// Call with the number of visible characters of the growing row.
    void setRevealed(std::size_t count) { revealed_ = count; }
    /// Returns how many characters of a row that has just begun to grow were already visible in
    /// other rows. The next call returns 0, so that a row that is scrolled back into view is
    /// streamed from its start.
    std::size_t takeAlreadyRevealed() { return std::exchange(alreadyRevealed_, 0); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void firstPrimaryChanged();

  private:
    std::size_t revealedIn(const CaptionStageRows& next) const;

    CaptionStageRows rows_;
    std::size_t revealed_ = 0;
    std::size_t alreadyRevealed_ = 0;
};

} // namespace tessarune
