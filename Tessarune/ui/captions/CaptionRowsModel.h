#pragma once

#include "Tessarune/display/CaptionStageRows.h"

#include <QAbstractListModel>

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

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void firstPrimaryChanged();

  private:
    CaptionStageRows rows_;
};

} // namespace tessarune
